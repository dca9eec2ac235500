#include "mainwindow/ChannelTable.h"

namespace {
constexpr int hexadecimal = 16;
constexpr int digitsPerComponent = 2;

const ChannelDescriptor& descriptor(int index)
{
    return ChannelTable::descriptors.at(static_cast<std::size_t>(index));
}

int component(const QString& text, int position)
{
    bool ok = false;
    const uint value = text.mid(position, digitsPerComponent).toUInt(&ok, hexadecimal);
    return ok && value <= 0xFF ? static_cast<int>(value) : 0;
}
} // namespace

QString ChannelTable::wavelength(int index)
{
    return QString::fromLatin1(descriptor(index).wavelength);
}

QString ChannelTable::defaultName(int index)
{
    return wavelength(index) + QLatin1String("nm");
}

QColor ChannelTable::defaultColour(int index)
{
    return colourFromText(QString::fromLatin1(descriptor(index).defaultColour));
}

QString ChannelTable::settingsGroup(int index)
{
    return QStringLiteral("%1%2").arg(QStringLiteral("Channel")).arg(index + 1);
}

QColor ChannelTable::colourFromText(const QString& text)
{
    return {component(text, 0), component(text, digitsPerComponent), component(text, 2 * digitsPerComponent)};
}

QString ChannelTable::colourToText(const QColor& colour)
{
    const auto digits = [](int value) {
        return QStringLiteral("%1").arg(value, digitsPerComponent, hexadecimal, QLatin1Char('0'));
    };
    return QStringLiteral("%1%2%3").arg(digits(colour.red()), digits(colour.green()), digits(colour.blue()));
}
