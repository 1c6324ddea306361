#include "views/ui/file_list_hooks.h"

FileListHooks gFileListHooks;
