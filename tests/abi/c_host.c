/* A host in C99: the flat functions, the strings and the containers, with tables opaque. */

#include <tessarin/containers.h>
#include <tessarin/tables.h>
#include <tessarin/types.h>

#include <stdio.h>
#include <string.h>

static int Check(int holds, const char* what) {
    if (!holds) printf("failed: %s\n", what);
    return holds ? 0 : 1;
}

static int Tables(void) {
    TessarinTable* table = CreateTable();
    int failures = Check(SetInteger(table, "speed", 5) == 1 && GetInteger(table, "speed") == 5, "integer");
    failures += Check(SetFloat3(table, "at", 1, 2, 3) == 1 && GetFloat3(table, "at").z == 3, "vector by value");
    failures += Check(Set(table, "child") == table && ValidateTable(GetTable(table, "child")) == 2, "child");
    failures += Check(GetString(table, "none") == NULL && Empty(NULL) == 1, "absent");
    failures += Check(cstr_path("A//b") == cstr_find("a\\b"), "path form");
    return failures + Check(CloseTable(table) == 1 && ValidateTable(table) == 0, "close");
}

static int Containers(void) {
    farr* numbers = farr_create(sizeof(int));
    hm* map = i32hm_create(16, sizeof(int));
    omem* blocks = omem_create(16, 4);
    imem* bytes = imem_create(64);
    int seven = 7;
    int failures = Check(*(int*)farr_push_element(numbers, &seven) == 7, "array");
    failures += Check(ptrhm_set(map, 1, &seven) == 1 && *(int*)i32hm_get(map, 1) == 7, "map");
    failures += Check(omem_alloc(blocks) != NULL && omem_destroy(blocks) == 1, "object pool");
    failures += Check(imem_alloc(bytes, 64) != NULL && imem_alloc(bytes, 65) == NULL, "incremental pool");
    farr_destroy(numbers);
    i32hm_destroy(map);
    imem_destroy(bytes);
    return failures;
}

int main(void) { return Tables() + Containers() == 0 ? 0 : 1; }
