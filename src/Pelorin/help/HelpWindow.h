#pragma once

#include <QDialog>
#include <QString>

class ManualBrowser;
class QPushButton;

/// The window in which the manual is read. It belongs to another window, closes with it, and stays usable
/// while that one is modal, as it is its child. All help windows have the size that the last one was given.
class HelpWindow : public QDialog
{
    Q_OBJECT

public:
    /// The one of @p owner, made when there is none yet; the owner keeps it.
    static HelpWindow& of(QWidget& owner);

    /// Comes to the front with this page, or with the contents where there is no such page.
    void showPage(const QString& page);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    explicit HelpWindow(QWidget& owner);
    QPushButton* addButton(const QString& name, const QString& text, const QString& toolTip,
                           const QString& keyText);
    void showHeading();
    void placeBesideOwner();

    ManualBrowser* m_browser;
    bool m_placed = false;
};
