// What all dialogs have in common.
#pragma once

class QDialog;
class QSize;
class QString;
class QWidget;

// The size that a window may have on its screen, in logical pixels: the frame that the window manager adds is
// taken off.
QSize dialog_room(const QWidget* window);

// Gives dialog its natural size. Where the screen has less room, as at a large scale, all but its last row
// (the buttons) scrolls.
void dialog_fit(QDialog* dialog);

// Shows dialog at its natural size (cut to the screen's) centred over parent. It is modal over its own parent
// window and deleted when it closes.
void dialog_open(QWidget* parent, QDialog* dialog);

// A tool tip that shows the text as it stands, whatever markup a name in it looks like.
QString tip_text(const QString& text);
