#pragma once

#include "QsLog2_1_0/LogLevel.h"

#include <QByteArray>
#include <QDebug>
#include <QLatin1String>
#include <QString>

#include <string>
#include <type_traits>

namespace QsLogging {

/// One log line in the making: collects items and writes the line when it goes out of scope. Made by the
/// macros of QsLog.h, which ask isLogged() first.
///
/// Items are joined by one blank. Text objects (QString, QByteArray, std::string) stand in double quotes
/// with everything escaped that could end the line or the quotes, as they may come from the device; C
/// strings, numbers, characters and true / false stand bare; a pointer is told as its address. Any other
/// type looks as QDebug shows it.
class LogStatement
{
public:
    explicit LogStatement(LogLevel level);
    /// Stamps and writes the line. An exception of a destination passes through, after an assertion;
    /// it is swallowed only while another one is on its way, where a second would end the program.
    ~LogStatement() noexcept(false);

    template<typename T>
    LogStatement& operator<<(const T& item);

private:
    Q_DISABLE_COPY_MOVE(LogStatement)
    using Length = QString::size_type;

    void write();
    void appendBare(QLatin1String utf8);
    void appendCharacter(char character);
    void appendNumber(qlonglong number);
    void appendNumber(qulonglong number);
    void appendReal(double number);
    void appendAddress(const void* address);
    void appendQuoted(const QString& text);
    void appendQuoted(const QByteArray& bytes);
    void appendShown(QString shown);
    void appendItem(const QString& shown);
    QChar* startItem(Length length);
    QChar* extend(Length length);

    QString m_line;      ///< longer than what it holds until the line is written
    Length m_length = 0; ///< characters of m_line that hold something
    Length m_stampPosition;
    LogLevel m_level;
    bool m_hasItems = false;
};

/// Room for `length` more characters, which the caller fills in.
inline QChar* LogStatement::extend(Length length)
{
    const Length start = m_length;
    m_length += length;
    if (m_length > m_line.size()) {
        m_line.resize(2 * m_length);
    }
    return m_line.data() + start;
}

/// The same for an item, set apart from the one before it.
inline QChar* LogStatement::startItem(Length length)
{
    const Length blank = m_hasItems ? 1 : 0;
    m_hasItems = true;
    QChar* target = extend(length + blank);
    *target = QLatin1Char(' '); // the item itself overwrites it where none is due
    return target + blank;
}

template<typename T>
LogStatement& LogStatement::operator<<(const T& item)
{
    using Item = std::decay_t<T>;
    static_assert(!std::is_function_v<T>, "stream manipulators have no effect on a log statement");
    if constexpr (std::is_same_v<Item, bool>) {
        appendBare(item ? QLatin1String("true") : QLatin1String("false"));
    } else if constexpr (std::is_same_v<Item, char>) {
        appendCharacter(item);
    } else if constexpr (std::is_integral_v<Item>) {
        appendNumber(static_cast<std::conditional_t<std::is_signed_v<Item>, qlonglong, qulonglong>>(item));
    } else if constexpr (std::is_floating_point_v<Item>) {
        appendReal(static_cast<double>(item));
    } else if constexpr (std::is_same_v<Item, const char*> || std::is_same_v<Item, char*>) {
        appendBare(QLatin1String(item)); // the length of a literal is known here already
    } else if constexpr (std::is_pointer_v<Item>) {
        appendAddress(item);
    } else if constexpr (std::is_same_v<Item, QString> || std::is_same_v<Item, QByteArray>) {
        appendQuoted(item);
    } else if constexpr (std::is_same_v<Item, std::string>) {
        appendQuoted(QByteArray::fromStdString(item));
    } else {
        QString shown;
        QDebug(&shown).nospace() << item;
        appendShown(shown);
    }
    return *this;
}

} // namespace QsLogging
