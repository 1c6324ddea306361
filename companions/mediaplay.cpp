// Plays sound and video files with the desktop's handler, or a well-known player.
#include "companions/handover_part.h"

static const char kHelp[] =
    "Usage: mediaplay FILE...\n"
    "Plays sound and video with the desktop's handler for their type, or the first well-known player "
    "found.\n";

int main(int argc, char** argv) {
  return handover_main(
      argc, argv, kHelp,
      {"celluloid", "totem", "dragon", "haruna", "parole", "smplayer", "vlc", "mpv", "mplayer", "ffplay"},
      "media player");
}
