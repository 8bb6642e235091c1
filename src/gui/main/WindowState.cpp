#include "gui/main/WindowState.h"

#include "app/PreferenceStore.h"
#include "core/PreferenceKeys.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>
#include <algorithm>

namespace korvane {

namespace {

// The screen's free area, less room for the window's frame.
QRect room(const QWidget &window)
{
    const QScreen *screen = window.screen() ? window.screen() : QGuiApplication::primaryScreen();
    return screen ? screen->availableGeometry().adjusted(0, 0, -16, -40) : QRect(0, 0, 1024, 700);
}

} // namespace

void WindowState::setMinimum(QWidget &window)
{
    // Small enough for a 1600x1000 screen at a scale factor of 2 (800x500 points), large
    // enough that Apply stays on the window.
    const QRect free = room(window);
    window.setMinimumSize(std::min(720, free.width()), std::min(400, free.height()));
}

void WindowState::restore(QWidget &window, PreferenceStore *store)
{
    const QRect free = room(window);
    window.resize(std::min(1100, free.width()), std::min(680, free.height()));
    if (!store)
        return;
    const QByteArray saved = store->value(PreferenceKeys::WindowGeometry).toByteArray();
    // Qt puts a window back on a screen when its saved place is off every screen of this run.
    if (saved.isEmpty() || !window.restoreGeometry(saved))
        return;
    if (window.width() > free.width() || window.height() > free.height())
        window.resize(std::min(window.width(), free.width()),
                      std::min(window.height(), free.height()));
}

void WindowState::save(const QWidget &window, PreferenceStore *store)
{
    if (!store)
        return;
    const QByteArray geometry = window.saveGeometry();
    if (store->value(PreferenceKeys::WindowGeometry).toByteArray() != geometry)
        store->setValue(PreferenceKeys::WindowGeometry, geometry);
}

} // namespace korvane
