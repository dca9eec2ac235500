#pragma once

#include <QLabel>

/// A one-line label whose text never pushes the layout: what does not fit ends in an ellipsis, and the tool
/// tip then leads with the whole text. text() always returns the whole text.
class ElidedLabel : public QLabel
{
    Q_OBJECT

public:
    explicit ElidedLabel(QWidget* parent = nullptr);

    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QString shownText() const;
};
