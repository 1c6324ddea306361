// Message boxes, alerts, blocking, focus and centring.
#pragma once

#include <QEvent>
#include <QPoint>
#include <QRect>
#include <QSize>
#include <QString>
#include <functional>

class QWidget;

// printf-formatted message (cut at 255 bytes, at a whole character) over parent with the one button
// "&Continue". Waits. Returns 1.
int wreport(QWidget* parent, const char* title, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

// The same with "&Yes" (default, 1) and "&No" (2).
int wask(QWidget* parent, const char* title, const char* format, ...) __attribute__((format(printf, 3, 4)));

// Any button list (core/button_list.h) over parent (null: centred on the screen). Waits; the button's number
// from 1.
int walert(QWidget* parent, const QString& title, const QString& message, const char* buttons);

// The same without waiting: answered is called once with the button's number. Returns the window.
QWidget* walert_open(QWidget* parent, const QString& title, const QString& message, const char* buttons,
                     std::function<void(int)> answered);

// Formats into a window's title or a label's or field's text. Characters formatted, or -1 for a null widget.
int wprintf(QWidget* widget, const char* format, ...) __attribute__((format(printf, 2, 3)));
// The same with a finished text of any length. Null is ignored.
void wset_text(QWidget* widget, const QString& text);

// Blocks all input to the widget behind a busy cursor (1), or undoes it. Calls nest. Null is ignored. A
// window that is told to close while blocked closes when it is released.
void wblock(QWidget* widget, int on);
// The same with another busy shape; a widget that is not a window is dimmed too.
void misc_block(QWidget* widget, int on);

// True for events by which a user works a widget: keys, shortcuts on their way, mouse, wheel, drops.
bool misc_is_input(const QEvent& event);

// Brings the window that contains widget to the front and gives widget the focus.
void wfocus(QWidget* widget);
// The same, always through the main window.
void misc_give_focus(QWidget* widget);

// Places child centred over parent, on the visible desktop. A null parent: centred on the screen.
void wcenter(QWidget* parent, QWidget* child);
// Where a child of that size goes: centred over the parent's rectangle, ending 25 pixels before a far edge of
// the visible desktop that it would cross, beginning 10 behind a near one.
QPoint wcenter_position(const QRect& parent, const QSize& child, const QRect& visible);
