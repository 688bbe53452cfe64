/// \file
/// Everything that the library offers. C++ only.

#ifndef TESSARIN_TESSARIN_H
#define TESSARIN_TESSARIN_H

#include "tessarin/auxiliary.h"
#include "tessarin/configure.h"
#include "tessarin/containers.h"
#include "tessarin/documents.h"
#include "tessarin/tables.h"
#include "tessarin/types.h"

#endif
