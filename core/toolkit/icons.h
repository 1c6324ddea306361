// The program's icons by the system's image names.
#pragma once

#include <QIcon>

// Own SVG resources/icons/NAME.svg, or the user's icon theme where it has the freedesktop name for it.
QIcon icon_get(const char* name);
