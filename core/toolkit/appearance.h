// Colours and icons for a desktop that gives the toolkit none of its own: without a platform theme it would
// be light with our own icons whatever the user has chosen for everything else.
#pragma once

enum class Shade { standard, dark, contrast_light, contrast_dark };

// Before the first window and the first icon: takes the shade and the icon theme that the user's GTK settings
// name (GTK_THEME, gtk-4.0/settings.ini, gtk-3.0/settings.ini), unless the toolkit has colours or icons of
// the desktop already. Interface thread.
void appearance_setup();

// True when a platform theme, the user's environment or the GTK settings have decided about the colours.
bool appearance_decided();

// Gives every window that shade's colours, now.
void appearance_set_shade(Shade shade);
