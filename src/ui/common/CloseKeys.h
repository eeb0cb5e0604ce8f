#pragma once

#include <QKeySequence>
#include <QList>

#include <functional>

class QWidget;

// The keys that close a window of its own (Ctrl+W, and Escape where closing loses nothing):
// an auxiliary window has no menu bar of its own to carry "Close".
namespace CloseKeys {

enum class Escape { closes, ignored };

// Runs `close` (the window's own close() when empty) on the close keys pressed in `window`.
void install(QWidget *window, Escape escape, std::function<void()> close = {});

} // namespace CloseKeys
