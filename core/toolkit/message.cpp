#include "core/toolkit/message.h"
