#pragma once

#include "help/Help.h"
#include "help/HelpWindow.h"
#include "help/ManualBrowser.h"
#include "support/WarningWatch.h"

#include <QApplication>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

/// A window with two fields, and with help that asks for whatever page it is told to.
template<typename Window>
class HelpBench
{
public:
    HelpBench()
    {
        auto* content = new QWidget;
        auto* layout = new QVBoxLayout(content);
        layout->addWidget(&line);
        layout->addWidget(&text);
        auto* outer = new QVBoxLayout(&window);
        outer->addWidget(content);
        Help::install(&window, [this] {
            ++asked;
            return page;
        });
    }
    ~HelpBench()
    {
        // The fields are members and no children to be deleted.
        line.setParent(nullptr);
        text.setParent(nullptr);
    }

    HelpBench(const HelpBench&) = delete;
    HelpBench& operator=(const HelpBench&) = delete;

    bool show()
    {
        window.show();
        window.activateWindow();
        return waitUntilActive(window);
    }
    /// The framework's own function also counts a window as active whose owner is.
    static bool waitUntilActive(const QWidget& widget)
    {
        return QTest::qWaitFor([&widget] { return QApplication::activeWindow() == &widget; });
    }
    HelpWindow* help() const { return findHelp(window); }

    static HelpWindow* findHelp(const QWidget& owner)
    {
        return owner.findChild<HelpWindow*>(QString(), Qt::FindDirectChildrenOnly);
    }
    static ManualBrowser* browser(const HelpWindow& help) { return help.findChild<ManualBrowser*>(); }
    QString shownPage() const
    {
        return help() != nullptr && help()->isVisible() ? browser(*help())->page() : QString();
    }

    WarningWatch watch;
    QString page = QStringLiteral("scenarios");
    int asked = 0;
    Window window;
    QLineEdit line;
    QPlainTextEdit text;
};
