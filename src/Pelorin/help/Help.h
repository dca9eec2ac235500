#pragma once

#include <QString>

#include <functional>

class QWidget;

/// The manual behind the F1 key. Pages are known by their names in docs/manual, without the ending.
namespace Help {
/// From now on F1 anywhere in @p window opens the window's help on the page that @p page names; it is asked
/// each time. A second call replaces the first.
///
/// The help window is a child of @p window, so that it can be used while that one is modal; it is not modal
/// itself. Each window has one, which is used again, and which closes and goes with the window.
void install(QWidget* window, std::function<QString()> page);

/// The same by code. The contents page is shown where there is no page of this name.
void show(QWidget* window, const QString& page);

/// The "helpPage" property of @p start or of the nearest of its parents that has one; else @p fallback.
QString pageAt(const QWidget* start, const QString& fallback);
} // namespace Help
