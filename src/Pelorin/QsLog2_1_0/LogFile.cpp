#include "QsLog2_1_0/LogFile.h"

#include <algorithm>

namespace QsLogging {

bool LogFile::open(OpenMode mode)
{
    m_cutOff.clear();
    return QFile::open(mode | Unbuffered);
}

qint64 LogFile::writeData(const char* data, qint64 length)
{
    if (!m_cutOff.isEmpty() && !completeCutLine()) {
        return length;
    }
    const qint64 written = std::max<qint64>(0, QFile::writeData(data, length));
    if (written > 0 && written < length) {
        m_cutOff = QByteArray(data + written, static_cast<int>(length - written));
    }
    return length;
}

bool LogFile::completeCutLine()
{
    const qint64 written = QFile::writeData(m_cutOff.constData(), m_cutOff.size());
    if (written > 0) {
        m_cutOff.remove(0, static_cast<int>(written));
    }
    return m_cutOff.isEmpty();
}

} // namespace QsLogging
