#include "QsLog2_1_0/LogStatement.h"

#include "QsLog2_1_0/Ascii.h"
#include "QsLog2_1_0/Logger.h"
#include "QsLog2_1_0/TimeStamp.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <exception>

namespace QsLogging {
namespace {

/// Characters set aside for a line, so that a usual one is built without a second allocation.
constexpr int usualLineLength = 200;

/// Room for any 64-bit number with its sign.
using NumberBuffer = std::array<char, 24>;

ushort codeOf(char character)
{
    return static_cast<uchar>(character);
}

ushort codeOf(QChar character)
{
    return character.unicode();
}

/// True for what needs no escape between double quotes, whatever the reader of the log is.
template<typename Character>
bool isPlain(Character character)
{
    const ushort code = codeOf(character);
    return code >= 0x20 && code < 0x7f && code != '"' && code != '\\';
}

/// A plain loop: the standard's algorithm is unrolled into several times the code, which costs more here than
/// it saves, as texts are short.
template<typename Text>
bool isAllPlain(const Text& text)
{
    for (const auto character : text) { // NOLINT(readability-use-anyofallof)
        if (!isPlain(character)) {
            return false;
        }
    }
    return true;
}

} // namespace

LogStatement::LogStatement(LogLevel level) : m_line(usualLineLength, Qt::Uninitialized), m_level(level)
{
    // The time is that of the writing, not of the making: its place is kept free until then.
    const QLatin1String levelText = textForLevel(level);
    m_stampPosition = levelText.size() + 1;
    QChar* target = extend(m_stampPosition + timeStampLength + 1);
    copyAscii(levelText, target);
    *(target + levelText.size()) = QLatin1Char(' ');
    *(target + m_stampPosition + timeStampLength) = QLatin1Char(' ');
}

LogStatement::~LogStatement() noexcept(false)
{
    try {
        write();
    } catch (const std::exception&) {
        Q_ASSERT_X(false, "QsLogging::LogStatement", "exception in logger helper destructor");
        if (std::uncaught_exceptions() == 0) {
            throw;
        }
    }
}

void LogStatement::write()
{
    m_line.resize(m_length);
    writeCurrentTimeStamp(m_line.data() + m_stampPosition);
    Logger::instance().write(m_line, m_level);
}

void LogStatement::appendItem(const QString& shown)
{
    std::copy(shown.begin(), shown.end(), startItem(shown.size()));
}

void LogStatement::appendShown(QString shown)
{
    // Quoted text comes with its line ends escaped but for the two of Unicode, which count as printable there
    // while many a viewer breaks the line at them. Other types show whatever they like.
    shown.replace(QLatin1Char('\n'), QLatin1String("\\n"));
    shown.replace(QLatin1Char('\r'), QLatin1String("\\r"));
    shown.replace(QChar(QChar::LineSeparator), QLatin1String("\\u2028"));
    shown.replace(QChar(QChar::ParagraphSeparator), QLatin1String("\\u2029"));
    appendItem(shown);
}

void LogStatement::appendBare(QLatin1String utf8)
{
    if (copyAscii(utf8, startItem(utf8.size()))) {
        return;
    }
    m_length -= utf8.size();
    const QString text = QString::fromUtf8(utf8.data(), utf8.size());
    std::copy(text.begin(), text.end(), extend(text.size()));
}

void LogStatement::appendCharacter(char character)
{
    // A lone character may be a byte from the device, and that must not end the line.
    if (codeOf(character) >= 0x20 && codeOf(character) < 0x7f) {
        appendBare(QLatin1String(&character, 1));
    } else {
        appendQuoted(QByteArray(1, character));
    }
}

void LogStatement::appendNumber(qlonglong number)
{
    NumberBuffer digits;
    const auto end = std::to_chars(digits.begin(), digits.end(), number).ptr;
    appendBare(QLatin1String(digits.begin(), end));
}

void LogStatement::appendNumber(qulonglong number)
{
    NumberBuffer digits;
    const auto end = std::to_chars(digits.begin(), digits.end(), number).ptr;
    appendBare(QLatin1String(digits.begin(), end));
}

void LogStatement::appendReal(double number)
{
    appendItem(QString::number(number));
}

void LogStatement::appendAddress(const void* address)
{
    appendItem(QLatin1String("0x") + QString::number(reinterpret_cast<quintptr>(address), 16));
}

void LogStatement::appendQuoted(const QString& text)
{
    if (isAllPlain(text)) {
        QChar* target = startItem(text.size() + 2);
        *target = QLatin1Char('"');
        *std::copy(text.begin(), text.end(), target + 1) = QLatin1Char('"');
        return;
    }
    QString shown;
    QDebug(&shown).nospace() << text;
    appendShown(shown);
}

void LogStatement::appendQuoted(const QByteArray& bytes)
{
    if (isAllPlain(bytes)) {
        QChar* target = startItem(bytes.size() + 2);
        *target++ = QLatin1Char('"');
        copyAscii(QLatin1String(bytes.constData(), bytes.size()), target);
        *(target + bytes.size()) = QLatin1Char('"');
        return;
    }
    QString shown;
    QDebug(&shown).nospace() << bytes;
    appendShown(shown);
}

} // namespace QsLogging
