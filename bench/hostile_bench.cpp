// What hostile input costs beside friendly input of the same size: each attack has a row of its own and a friendly row of
// as many bytes in the same form, and the ratio of the two is bounded.

#include <benchmark/benchmark.h>

// ---- Interned strings and pointer indexes

// ---- Tables changed through setters

// ---- Configuration texts and edited trees

// ---- Tab files
