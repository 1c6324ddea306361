// Plays sound and video files with the desktop's handler, or a well-known player.
#include <cstdio>

#include "companions/handover_part.h"

static const char kHelp[] =
    "Usage: mediaplay FILE...\n"
    "Plays sound and video with the desktop's handler for their type, or the first well-known player "
    "found.\n";

int main(int argc, char** argv) {
  companion_start(argc, argv, kHelp);
  if (argc < 2) return std::fputs(kHelp, stderr), 2;
  handover_files(
      Words(argv + 1, argv + argc),
      {"celluloid", "totem", "dragon", "haruna", "parole", "smplayer", "vlc", "mpv", "mplayer", "ffplay"},
      "media player");
}
