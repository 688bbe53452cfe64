// The exported face of the string table.

#include "tessarin/interned_strings.h"

#include "core/library_state.h"

using Tessarin::library_state;

cstr cstr_string(const char* text) { return library_state->strings.Intern(text); }

cstr cstr_string0(const char* text) { return library_state->strings.Intern(text == nullptr ? "" : text); }

cstr cstr_tolower(const char* text) { return library_state->strings.InternLowerCase(text); }

cstr cstr_path(const char* path) { return library_state->strings.InternPath(path); }

cstr cstr_path0(const char* path) { return library_state->strings.InternPath(path == nullptr ? ".\\" : path); }

cstr cstr_find(const char* text) { return library_state->strings.Find(text); }
