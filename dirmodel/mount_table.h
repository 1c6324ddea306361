// Which file system a path lies on, told without asking that file system.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// The mount points of this process, from the kernel's own table.
std::vector<std::string> mount_table_read();

// The mount point that the path lies below, by its text alone ("." and ".." are resolved, links are not).
std::string mount_point_of(std::string_view path, const std::vector<std::string>& mount_points);
