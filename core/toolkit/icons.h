// The program's icons by the system's image names.
#pragma once

#include <QIcon>

// Own SVG resources/icons/NAME.svg, or for the toolbars' images the user's icon theme where it has the
// freedesktop name. Nothing is loaded or drawn before the icon is painted; the dark ink of an own drawing
// takes the palette's text colour.
QIcon icon_get(const char* name);
