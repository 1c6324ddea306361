// Shows images with the desktop's handler, or a well-known viewer.
#include <cstdio>

#include "companions/handover_part.h"

static const char kHelp[] =
    "Usage: imgshow FILE...\n"
    "Shows images with the desktop's handler for their type, or the first well-known viewer found.\n";

int main(int argc, char** argv) {
  companion_start(argc, argv, kHelp);
  if (argc < 2) return std::fputs(kHelp, stderr), 2;
  handover_files(Words(argv + 1, argv + argc),
                 {"loupe", "eog", "gwenview", "ristretto", "eom", "xviewer", "nomacs", "gthumb", "lximage-qt",
                  "qimgv", "geeqie", "viewnior", "feh", "nsxiv", "sxiv", "imv", "display"},
                 "image viewer");
}
