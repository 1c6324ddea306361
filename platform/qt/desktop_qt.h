// The desktop on Qt: what the program sets up, and what the face's own questions are built on.
#pragma once

#include <functional>

class QWidget;

// Once, on the interface thread, after the application object was made.
void desktop_qt_setup();

// Opens a question window without waiting, and tells its answer (from 1) once.
using DesktopQuestion = std::function<QWidget*(std::function<void(int)> answered)>;

// Opens the question on the interface thread and waits for its answer, from any thread. Once desk_end was
// called, and after the interface is gone, the answer is escape.
int desktop_qt_ask(int escape, DesktopQuestion open);

// Closes the road to the interface: every call that waits for it returns, every question is answered.
// Whatever thread asks later is answered at once. Touches no widget.
void desktop_qt_gone();

// Undoes desk_end: for tests that start afresh.
void desktop_qt_reset();
