#pragma once

#include <QColor>
#include <QObject>
#include <QString>

/// One laser channel as the program knows it: a plain model without signals of its own. Created without a
/// parent; the Scenario that lists it owns it.
class channel : public QObject
{
    Q_OBJECT

public:
    channel() = default;

    quint8 index() const { return m_index; } ///< 0 to 7 in the order 405 to 730 nm
    void setIndex(quint8 index) { m_index = index; }
    /// Nanometres without the unit, for example "405"; also the channel's name on the wire.
    QString wavelength() const { return m_wavelength; }
    void setWavelength(const QString& wavelength) { m_wavelength = wavelength; }
    QString name() const { return m_name; } ///< the operator's text
    void setName(const QString& name) { m_name = name; }
    float intensity() const { return m_intensity; } ///< percent, 0 to 100
    void setIntensity(float percent) { m_intensity = percent; }
    bool isShutterOpen() const { return m_shutterOpen; } ///< last state the device told
    void setShutterOpen(bool open) { m_shutterOpen = open; }
    bool isVisible() const { return m_visible; }
    void setVisible(bool visible) { m_visible = visible; }
    bool isEnabled() const { return m_enabled; } ///< false while a fibre interlock holds the channel
    void setEnabled(bool enabled) { m_enabled = enabled; }
    bool isTtlInverted() const { return m_ttlInverted; }
    void setTtlInverted(bool inverted) { m_ttlInverted = inverted; }
    QColor colour() const { return m_colour; }
    void setColour(const QColor& colour) { m_colour = colour; }

private:
    quint8 m_index = 0;
    QString m_wavelength;
    QString m_name;
    float m_intensity = 0.0F;
    bool m_shutterOpen = false;
    bool m_visible = true;
    bool m_enabled = false;
    bool m_ttlInverted = false;
    QColor m_colour;
};
