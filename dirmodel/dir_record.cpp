#include "dirmodel/dir_record.h"

DirRecord gDir;
