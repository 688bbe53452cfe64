/// Interned strings: the process-wide table behind every key and string of the library. Usable from C99 and C++17.
///
/// Nothing is ever removed from it; memory goes when the library is unloaded. A text is limited to 1,048,567 bytes
/// (an arena of 1 MiB less a node's overhead): a longer one answers null and is not added.
///
/// Threads: every function may be called from any thread; a cstr may be passed between threads freely.

#ifndef TESSARIN_INTERNED_STRINGS_H
#define TESSARIN_INTERNED_STRINGS_H

#include "tessarin/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/// Interns a text as it is, case and all.
/// returns  its cstr; null for a null or overlong text, or when memory runs out (the table unchanged: try again)
TESSARIN_API cstr cstr_string(const char* text);

/// As cstr_string, with null standing for the empty string.
TESSARIN_API cstr cstr_string0(const char* text);

/// Interns the text with `A` to `Z` turned to `a` to `z`; every other byte stays. Results as in cstr_string.
TESSARIN_API cstr cstr_tolower(const char* text);

/// Interns the path form: letters as in cstr_tolower, each run of `\` and `/` one `\`, nothing else changed. The form
/// ends after 255 bytes written; what follows is dropped. Results as in cstr_string.
TESSARIN_API cstr cstr_path(const char* path);

/// As cstr_path, with null standing for ".\".
TESSARIN_API cstr cstr_path0(const char* path);

/// The cstr of a text that is interned already, as it is; null for null and for any other text. Adds nothing.
TESSARIN_API cstr cstr_find(const char* text);

#ifdef __cplusplus
}
#endif

#endif
