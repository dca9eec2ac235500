#include "help/HelpWindow.h"

#include "help/ManualBrowser.h"

#include <QBoxLayout>
#include <QEvent>
#include <QHideEvent>
#include <QPushButton>
#include <QScreen>

namespace {
constexpr QSize firstSize(680, 640);
/// What a desktop may put around a window.
constexpr QSize frameAllowance(16, 48);

/// Of the whole process, as a dialog that is made anew each time gets a new help window, too.
QSize lastSize = firstSize;

QSize fitting(const QSize& wanted, const QScreen* screen)
{
    return wanted.boundedTo(screen->availableSize() - frameAllowance);
}
} // namespace

HelpWindow& HelpWindow::of(QWidget& owner)
{
    auto* existing = owner.findChild<HelpWindow*>(QString(), Qt::FindDirectChildrenOnly);
    return existing != nullptr ? *existing : *new HelpWindow(owner);
}

HelpWindow::HelpWindow(QWidget& owner) : QDialog(&owner), m_browser(new ManualBrowser(this))
{
    setObjectName(QStringLiteral("HelpWindow"));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    setModal(false);
    m_browser->setObjectName(QStringLiteral("manualBrowser"));
    m_browser->setAccessibleName(tr("Manual page"));

    QPushButton* back = addButton(QStringLiteral("pushButtonBack"), tr("Back"), tr("To the page before"),
                                  QStringLiteral("Alt+Left"));
    QPushButton* forward = addButton(QStringLiteral("pushButtonForward"), tr("Forward"),
                                     tr("To the page that was left by Back"), QStringLiteral("Alt+Right"));
    QPushButton* contents = addButton(QStringLiteral("pushButtonContents"), tr("Contents"),
                                      tr("To the list of all pages"), QStringLiteral("Alt+Home"));
    back->setEnabled(false);
    forward->setEnabled(false);
    connect(back, &QPushButton::clicked, m_browser, &ManualBrowser::backward);
    connect(forward, &QPushButton::clicked, m_browser, &ManualBrowser::forward);
    connect(contents, &QPushButton::clicked, m_browser, &ManualBrowser::home);
    connect(m_browser, &ManualBrowser::backwardAvailable, back, &QPushButton::setEnabled);
    connect(m_browser, &ManualBrowser::forwardAvailable, forward, &QPushButton::setEnabled);
    connect(m_browser, &ManualBrowser::sourceChanged, this, &HelpWindow::showHeading);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(back);
    buttons->addWidget(forward);
    buttons->addWidget(contents);
    buttons->addStretch();
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(buttons);
    layout->addWidget(m_browser);

    owner.installEventFilter(this);
}

QPushButton* HelpWindow::addButton(const QString& name, const QString& text, const QString& toolTip,
                                   const QString& keyText)
{
    const QKeySequence key(keyText, QKeySequence::PortableText);
    auto* button = new QPushButton(text, this);
    button->setObjectName(name);
    button->setToolTip(toolTip + QLatin1String(" (") + key.toString(QKeySequence::NativeText) +
                       QLatin1Char(')'));
    button->setShortcut(key);
    // Return is for the link that has the focus.
    button->setAutoDefault(false);
    return button;
}

void HelpWindow::showPage(const QString& page)
{
    m_browser->showPage(page);
    if (!isVisible()) {
        resize(fitting(lastSize, parentWidget()->screen()));
        placeBesideOwner();
    }
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
    m_browser->setFocus();
}

void HelpWindow::showHeading()
{
    setWindowTitle(m_browser->heading() + QLatin1String(" - ") + tr("VYR Help"));
}

/// Where there is room, so that what the help tells about can be seen; once, as it may be moved away.
void HelpWindow::placeBesideOwner()
{
    if (m_placed) {
        return;
    }
    m_placed = true;
    const QRect room = parentWidget()->screen()->availableGeometry();
    const QRect owner = parentWidget()->frameGeometry();
    const QSize needed = size() + frameAllowance;
    for (const int left : {owner.right() + 1, owner.left() - needed.width()}) {
        const int top = qBound(room.top(), owner.top(), room.bottom() + 1 - needed.height());
        if (room.contains(QRect(QPoint(left, top), needed))) {
            move(left, top);
            return;
        }
    }
}

bool HelpWindow::eventFilter(QObject* watched, QEvent* event)
{
    // Left on the screen alone, it would keep nobody's company and hold up nobody's end.
    if (watched == parent() && event->type() == QEvent::Hide && !event->spontaneous()) {
        close();
    }
    return QDialog::eventFilter(watched, event);
}

void HelpWindow::hideEvent(QHideEvent* event)
{
    if (!event->spontaneous() && !isMaximized()) {
        lastSize = size();
    }
    QDialog::hideEvent(event);
}
