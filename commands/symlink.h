// Creating a symbolic link to an entry of the directory shown.
#pragma once

#include <string>

enum class SymlinkStep {
  NOTHING,  // there is no source: do nothing
  NOTICE,   // show title and text with the one button "&Close"; the dialog stays
  ASK,      // show them with SYMLINK_BUTTONS; on 2 call again with overwrite set
  DONE,     // the link stands
};

constexpr const char* SYMLINK_BUTTONS = "#&Cancel|@&Ok";

struct SymlinkResult {
  SymlinkStep step = SymlinkStep::NOTHING;
  std::string title, text;
};

// Links destination (as typed, relative to dir) to dir/source, both on-disk forms. overwrite: the question of
// an earlier call was answered with Ok. by_path_manager: the link is to live in the path manager only.
SymlinkResult symlink_create(const std::string& dir, const std::string& source,
                             const std::string& destination, bool by_path_manager, bool overwrite);
