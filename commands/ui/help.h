// The Help menu.
#pragma once

void help_quickref();
void help_about();
