/// \file
/// Services that don't belong to the tables: tab-separated files, and events between threads. Includes the headers of
/// both. C++ only.

#ifndef TESSARIN_AUXILIARY_H
#define TESSARIN_AUXILIARY_H

#include "tessarin/events.h"
#include "tessarin/tab_files.h"

#endif
