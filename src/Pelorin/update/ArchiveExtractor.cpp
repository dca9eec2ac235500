#include "update/ArchiveExtractor.h"

#include "QsLog2_1_0/QsLog.h"
#include "update/ArchiveUnpacking.h"

void ArchiveExtractor::setArchive(const QString& path)
{
    m_archive.setFile(path);
    m_archive.setCaching(false); // the file may change or go between two attempts
}

bool ArchiveExtractor::extract(const Pause& pause)
{
    ArchiveUnpacking unpacking(m_archive, pause);
    m_status = unpacking.run();
    if (m_status != ArchiveStatus::Success) {
        QS_ERROR() << "Unpacking failed:" << int(m_status) << unpacking.failureText();
    }
    return m_status == ArchiveStatus::Success;
}
