/// \file
/// Typed hierarchical tables: the header to include for them. From C99 it gives the interned strings, the factories and
/// the flat functions over an opaque table; from C++ the interfaces too.

#ifndef TESSARIN_TABLES_H
#define TESSARIN_TABLES_H

#include "tessarin/interned_strings.h"
#include "tessarin/types.h"

#ifdef __cplusplus
#include "tessarin/table_interface.h"

/// The flat functions' name for a table.
using TessarinTable = Tessarin::ITable;

extern "C" {
#else
/// The flat functions' name for a table, opaque to C.
typedef struct TessarinTable TessarinTable;
#endif

/// Makes an empty table.
/// returns  a root table, owned by the caller and ended with CloseTable; null when memory runs out
/// Threads: tables may be made and closed on several threads at once.
TESSARIN_API TessarinTable* CreateTable(void);

/// Ends a table with its entries and child tables; external and reference tables in it stay alive. Nobody is notified.
/// returns  always 1, also for null
/// REQUIRES: the table came from a factory and no other table has taken ownership of it
TESSARIN_API uint32_t CloseTable(TessarinTable* table);

/// Whether an address is a live table. What it points at isn't touched.
/// returns  1 for a table that a factory made; 2 for a child that Set made, as loading JSON does; 0 for null, any other
///          address, and children from the readable text form
/// Threads: any, at any time.
TESSARIN_API uint32_t ValidateTable(TessarinTable* table);

// The flat functions take a table first. For a null table they do nothing, intern nothing, and return 0, null or zeros
// (Empty returns 1). Each does what the operation of Tessarin::ITable of that name does, in the form without a
// fallback; those that change something notify the listeners. Pointers that they return are borrowed as there. Threads:
// those of the table.

/// 1 if `table` is null, else 0, whether or not it has entries.
TESSARIN_API uint32_t Empty(TessarinTable* table);

/// The value's first 32 bits as they are; 0 if there is no such entry.
TESSARIN_API int32_t GetInteger(TessarinTable* table, const char* key);
/// The real, or an integer converted; 0.0 if there is no such entry.
TESSARIN_API float GetReal(TessarinTable* table, const char* key);
/// The string; null if there is no such entry. REQUIRES: the entry, if there is one, is a string
TESSARIN_API cstr GetString(TessarinTable* table, const char* key);
/// The child, external or reference table; null for a missing entry or any other kind.
TESSARIN_API TessarinTable* GetTable(TessarinTable* table, const char* key);
/// The pointer; null for a missing entry or any other kind.
TESSARIN_API void* GetPtr(TessarinTable* table, const char* key);

// The vector; zeros if there is no such entry. For another kind, its words as they are.
TESSARIN_API Float2 GetFloat2(TessarinTable* table, const char* key);
TESSARIN_API Float3 GetFloat3(TessarinTable* table, const char* key);
TESSARIN_API Float4 GetFloat4(TessarinTable* table, const char* key);

/// The matrix; zeros if there is no such entry or it holds another kind.
TESSARIN_API Float4x4 GetFloat4x4(TessarinTable* table, const char* key);
/// The handle; 0 if there is no such entry.
TESSARIN_API Handle GetHandle(TessarinTable* table, const char* key);
/// The number of items in the array part if there is one, else of entries.
TESSARIN_API uint32_t GetCount(TessarinTable* table);
/// The number of entries.
TESSARIN_API uint32_t GetElementCount(TessarinTable* table);

/// Makes a child table under `key`.
/// returns  `table`, not the child, whether or not the child was made: GetTable returns it
TESSARIN_API TessarinTable* Set(TessarinTable* table, const char* key);

// The setters return 1, also when the value was there already; 0 if the entry has another kind or can't be made
// (SetTable: if it has any value). Texts, vectors, matrices and handles are copied, tables and pointers are not.
TESSARIN_API uint32_t SetInteger(TessarinTable* table, const char* key, int32_t value);
TESSARIN_API uint32_t SetReal(TessarinTable* table, const char* key, float value);
TESSARIN_API uint32_t SetString(TessarinTable* table, const char* key, const char* text);
/// On success `table` owns `child`, and the host must not close it any more.
TESSARIN_API uint32_t SetTable(TessarinTable* table, const char* key, TessarinTable* child);
/// Stores the path form of `path` as a string.
TESSARIN_API uint32_t SetPath(TessarinTable* table, const char* key, const char* path);
TESSARIN_API uint32_t SetPtr(TessarinTable* table, const char* key, void* value);
TESSARIN_API uint32_t SetExternalTable(TessarinTable* table, const char* key, TessarinTable* child);
TESSARIN_API uint32_t SetReferenceTable(TessarinTable* table, const char* key, TessarinTable* child);
TESSARIN_API uint32_t SetFloat2(TessarinTable* table, const char* key, const Float2* value);
/// The only vector that is passed by its components.
TESSARIN_API uint32_t SetFloat3(TessarinTable* table, const char* key, float x, float y, float z);
TESSARIN_API uint32_t SetFloat4(TessarinTable* table, const char* key, const Float4* value);
TESSARIN_API uint32_t SetFloat4x4(TessarinTable* table, const char* key, const Float4x4* value);
TESSARIN_API uint32_t SetHandle(TessarinTable* table, const char* key, const Handle* value);

/// Removes all entries with what they own. Returns 1.
TESSARIN_API uint32_t Clear(TessarinTable* table);
/// Removes an entry with all that it owns. Returns 1; 0 if there is none.
TESSARIN_API uint32_t Remove(TessarinTable* table, const char* key);
/// Gives an entry another key. Returns 1; 0 if `old_key` is absent or `new_key` present.
TESSARIN_API uint32_t Rename(TessarinTable* table, const char* old_key, const char* new_key);

#ifdef __cplusplus
} // extern "C"
#endif

#endif
