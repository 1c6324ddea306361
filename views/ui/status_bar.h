#pragma once

// Writes the summary of the directory (status2) or of the selection (status1).
void status_bar_update();
