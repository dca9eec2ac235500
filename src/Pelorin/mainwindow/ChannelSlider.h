#pragma once

#include <QSlider>

/// The vertical intensity slider of one channel. It differs from a plain slider in two ways: the wheel moves
/// it only while it has the keyboard focus (elsewhere the event travels on to the parent), and a scale with
/// a mark at every 25 % stands beside the groove where there is room for it.
class ChannelSlider : public QSlider
{
    Q_OBJECT

public:
    explicit ChannelSlider(QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    /// The vertical centre of the handle, in widget coordinates, if it stood at @p value.
    int handleCentre(int value) const;
};
