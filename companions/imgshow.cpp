// Shows images with the desktop's handler, or a well-known viewer.
#include "companions/handover_part.h"

static const char kHelp[] =
    "Usage: imgshow FILE...\n"
    "Shows images with the desktop's handler for their type, or the first well-known viewer found.\n";

int main(int argc, char** argv) {
  return handover_main(
      argc, argv, kHelp,
      {"loupe", "eog", "gwenview", "ristretto", "eom", "xviewer", "nomacs", "gthumb", "lximage-qt", "qimgv",
       "geeqie", "viewnior", "feh", "nsxiv", "sxiv", "imv", "display"},
      "image viewer");
}
