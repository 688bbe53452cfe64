/// \file
/// Interned strings: the process-wide table of every key and string of the library. Usable from C99 and C++17.
///
/// Nothing is ever removed from it; its memory is freed when the library is unloaded. A text is limited to 1,048,567
/// bytes (an arena of 1 MiB less the overhead of one text): for a longer one the result is null and nothing is added.
///
/// Threads: every function may be called from any thread; a cstr may be passed between threads freely.

#ifndef TESSARIN_INTERNED_STRINGS_H
#define TESSARIN_INTERNED_STRINGS_H

#include "tessarin/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/// Interns a text as it is, with its case.
/// text     copied; ends with a NUL
/// returns  its cstr; null for a null or overlong text, or when memory runs out (the table unchanged: try again)
TESSARIN_API cstr cstr_string(const char* text);

/// As cstr_string, but null means the empty string.
TESSARIN_API cstr cstr_string0(const char* text);

/// Interns the text with `A` to `Z` changed to `a` to `z`; every other byte stays. Results as in cstr_string.
TESSARIN_API cstr cstr_tolower(const char* text);

/// Interns the path form: letters as in cstr_tolower, each run of `\` and `/` as one `\`, nothing else changed. The
/// form ends after 255 bytes; what follows is dropped. Results as in cstr_string.
TESSARIN_API cstr cstr_path(const char* path);

/// As cstr_path, but null means ".\".
TESSARIN_API cstr cstr_path0(const char* path);

/// The cstr of a text that is interned already, compared byte for byte. Adds nothing.
/// returns  null for null and for a text that isn't interned
TESSARIN_API cstr cstr_find(const char* text);

#ifdef __cplusplus
}
#endif

#endif
