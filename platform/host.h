// What the operating system gives.
#pragma once

#include <string>
#include <vector>

struct dirent;
struct stat64;

// Status data handed back with a directory entry: this platform has none. -1: ask the file system.
int lstat_optimize(const struct dirent* entry, struct stat64* out);
int stat_optimize(const struct dirent* entry, struct stat64* out);

// The first file of that name along a ':'-separated path list that may be executed; empty when there is none.
std::string pathfind_r(const std::string& path_list, const std::string& name);

// Starts program (path, or a name found along PATH) in the background. argv holds argument 0 too. The process
// id, or -1 with errno, also when the exec itself failed.
int spawnvpe(const std::string& program, const std::vector<std::string>& argv);

// A link held by the path manager only. This platform has none: -1 with ENOSYS.
int pathmgr_symlink(const char* target, const char* path);

// "/usr/vireon/bin/NAME" where that exists, else the companion installed with zan (or of the build tree).
std::string host_companion(const std::string& name);
// Puts the companions' directory behind the user's own PATH for everything that is started.
void host_extend_path();
// This very program, for a further window.
std::string host_program();
