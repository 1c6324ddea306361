// Outlines for palettes in which the usual style's own cannot be seen.
#pragma once

// Where the window's colour is nearly black, or the palette is black on white, every field, box, button and
// frame gets an outline in the text's colour; with any other palette the style stays as it is. To be called
// once the palette is known, and again when it has changed. Interface thread.
void contrast_style_update();
