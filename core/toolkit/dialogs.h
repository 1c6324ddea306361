// What all dialogs have in common.
#pragma once

class QDialog;
class QString;
class QWidget;

// Shows dialog at its natural size (cut to the screen's) centred over parent. It is modal over its own parent
// window and deleted when it closes.
void dialog_open(QWidget* parent, QDialog* dialog);

// A tool tip that shows the text as it stands, whatever markup a name in it looks like.
QString tip_text(const QString& text);
