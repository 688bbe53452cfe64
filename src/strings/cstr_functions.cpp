// The exported cstr_ functions: each only decides which text a null argument means, and calls the string table.

#include "tessarin/interned_strings.h"

#include "strings/string_table.h"

using Tessarin::string_table;

cstr cstr_string(const char* text) { return string_table->Intern(text); }

cstr cstr_string0(const char* text) { return string_table->Intern(text == nullptr ? "" : text); }

cstr cstr_tolower(const char* text) { return string_table->InternLowerCase(text); }

cstr cstr_path(const char* path) { return string_table->InternPath(path); }

cstr cstr_path0(const char* path) { return string_table->InternPath(path == nullptr ? ".\\" : path); }

cstr cstr_find(const char* text) { return string_table->Find(text); }
