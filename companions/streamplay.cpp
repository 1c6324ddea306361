// Plays streaming-media files with the desktop's handler, or a well-known player.
#include "companions/handover_part.h"

static const char kHelp[] =
    "Usage: streamplay FILE...\n"
    "Plays streaming media with the desktop's handler for their type, or the first well-known player "
    "found.\n";

int main(int argc, char** argv) {
  return handover_main(argc, argv, kHelp,
                       {"vlc", "mpv", "celluloid", "smplayer", "totem", "mplayer", "ffplay"},
                       "player for streaming media");
}
