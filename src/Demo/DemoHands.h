#pragma once

#include <QString>

class QSlider;
class QWidget;

/// The hands and eyes of an operator: uses a window and its dialogs with mouse and keyboard, and reads what
/// they show. Whatever is not there is not used. The window must outlive it.
class DemoHands
{
public:
    explicit DemoHands(QWidget& window) : m_window(window) {}

    /// In the middle, by the object name. Returns when the click has been answered, which for one that opens
    /// a modal dialog is when that has closed.
    void click(const QString& objectName) const;
    /// With the mouse from where the handle is.
    void dragSlider(const QString& objectName, int value) const;
    /// The tab with this page.
    void clickTab(const QString& pageName) const;
    /// Answers the modal dialog in front with the button that has this text; its "&" does not count.
    static void answerBox(const QString& buttonText);
    /// Key by key; a line break is the Return key.
    void type(const QString& objectName, const QString& text) const;
    /// The F1 key, which as a shortcut comes from the window system alone.
    void askForHelp() const;

    bool labelShows(const QString& objectName, const QString& text) const;
    bool buttonShows(const QString& objectName, const QString& text) const;
    /// That a field, a console or a label has a text beside what stands in the form.
    bool isFilled(const QString& objectName) const;
    bool isInFront(const QString& pageName) const;
    bool isShown(const QString& objectName) const;
    QWidget* find(const QString& objectName) const;
    static QWidget* box(); ///< the modal dialog in front, if any

private:
    QWidget& m_window;
};
