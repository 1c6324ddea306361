// Light or dark as the desktop's settings portal says, for desktops that tell the toolkit nothing.
#pragma once

// Asks the portal a moment after the first window is painted, and follows what the user changes there later.
// Nothing happens without a session bus, without a portal that runs, or where the colours are decided
// already.
void appearance_portal_follow();
