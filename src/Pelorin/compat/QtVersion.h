#pragma once

#include <QCoreApplication>
#include <QTextStream>
#include <QVariant>
#include <QtGlobal>

#include <algorithm>

#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
#include <QTextCodec>

#include <memory>
#else
#include <QStringDecoder>
#endif

/// What Qt 5 and Qt 6 spell differently. Nothing else asks which of them it is built against.
namespace QtVersion {

/// Makes @p stream write and read UTF-8.
inline void useUtf8(QTextStream& stream)
{
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    stream.setCodec("UTF-8");
#else
    stream.setEncoding(QStringConverter::Utf8);
#endif
}

/// Text in the local 8-bit encoding that comes in pieces: a character split over two of them is decoded once
/// it is complete. Nothing is taken for a byte order mark.
class LocalDecoder
{
public:
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    QString decode(const QByteArray& bytes)
    {
        return m_decoder->toUnicode(bytes);
    }

private:
    std::unique_ptr<QTextDecoder> m_decoder{
        QTextCodec::codecForLocale()->makeDecoder(QTextCodec::IgnoreHeader)};
#else
    /// Qt 6.4's decoder loses what follows a character that is never finished, so it is given none.
    QString decode(const QByteArray& bytes)
    {
        m_rest += bytes;
        const auto whole = m_rest.size() - unfinished();
        QStringDecoder decoder(QStringDecoder::System,
                               QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
        QString text = decoder.decode(m_rest.left(whole));
        m_rest.remove(0, whole);
        return text;
    }

private:
    /// Bytes at the end that may yet become a character.
    qsizetype unfinished() const
    {
        for (qsizetype tail = 1; tail <= 3 && tail <= m_rest.size(); ++tail) {
            const auto byte = static_cast<uchar>(m_rest.at(m_rest.size() - tail));
            if (byte >= 0xC2 && byte <= 0xF4) {
                const int needed = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : 2;
                return tail < needed ? tail : 0;
            }
            if (byte < 0x80 || byte > 0xBF) {
                return 0;
            }
        }
        return 0;
    }

    QByteArray m_rest;
#endif
};

/// The value under which the settings file keeps @p text. Qt 5 writes what is beyond ASCII unit by unit. Qt 6
/// writes UTF-8 instead, which Qt 5 takes for Latin-1 and which loses half a surrogate pair and a byte order
/// mark at the front; the one element of a list it still writes unit by unit, for both to read.
inline QVariant storable(const QString& text)
{
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    return text;
#else
    const auto isAscii = [](QChar unit) { return unit.unicode() < 0x80; };
    return std::all_of(text.begin(), text.end(), isAscii) ? QVariant(text) : QVariant(QVariantList{text});
#endif
}

/// Whether @p value is a text as either Qt's storable() leaves it.
inline bool isStoredText(const QVariant& value)
{
    if (value.userType() != QMetaType::QVariantList) {
        return value.userType() == QMetaType::QString;
    }
    const QVariantList list = value.toList();
    return list.size() == 1 && list.first().userType() == QMetaType::QString;
}

/// The text that either Qt's storable() made @p value of; any other value as it reads by itself.
inline QString storedText(const QVariant& value)
{
    const bool isList = isStoredText(value) && value.userType() == QMetaType::QVariantList;
    return isList ? value.toList().first().toString() : value.toString();
}

/// Asks for sharp pictures on dense screens; Qt 6 needs no asking. To be called before the application
/// object is made.
inline void followScreenDensity()
{
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
#endif
}

} // namespace QtVersion
