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

// Starts program (path, or a name found along PATH) in the background, in directory dir (null: in ours). argv
// holds argument 0 too. The process id, or -1 with errno, also when the exec itself failed. The child has the
// default signal dispositions, a clear signal mask and no descriptors of ours beyond the first three; it is
// nobody's zombie and is never waited for.
int spawnvpe(const std::string& program, const std::vector<std::string>& argv, const char* dir = nullptr);

// Runs a shell command line and reads the first line it prints, at most limit bytes, its newline included.
// False when it prints nothing within timeout_ms; the command is then ended.
bool host_first_line(const std::string& command, size_t limit, int timeout_ms, std::string* line);

// Opens /dev/null for each of the first three descriptors that is closed. First of all in a program: else a
// file that it copies to, or its display connection, would take the place of its messages.
void host_fill_standard_descriptors();

// A link held by the path manager only. This platform has none: -1 with ENOSYS.
int pathmgr_symlink(const char* target, const char* path);

// "/usr/vireon/bin/NAME" where that exists, else the companion installed with zan (or of the build tree).
std::string host_companion(const std::string& name);
// Puts the companions' directory behind the user's own PATH for everything that is started.
void host_extend_path();
// This very program, for a further window.
std::string host_program();
// Another program for host_program to name from now on; empty: this one again. For whoever hosts the window
// in a program that is not zan.
void host_set_program(const std::string& path);
