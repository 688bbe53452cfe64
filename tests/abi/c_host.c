/* A host in C99: the flat functions, the strings and the containers, with tables opaque. */

#include <tessarin/containers.h>
#include <tessarin/tables.h>
#include <tessarin/types.h>

#include <stdio.h>

static int failures = 0;

static void Check(int holds, const char* what) {
    if (holds) return;
    printf("failed: %s\n", what);
    failures = 1;
}

int main(void) {
    TessarinTable* table = CreateTable();
    Check(SetFloat3(table, "at", 1, 2, 3) == 1 && GetFloat3(table, "at").z == 3, "vector by value");
    Check(Set(table, "child") == table && ValidateTable(GetTable(table, "child")) == 2, "child");
    Check(GetString(table, "none") == NULL && Empty(NULL) == 1, "absent");
    Check(cstr_path("A//b") == cstr_find("a\\b"), "path form");
    Check(CloseTable(table) == 1, "close");
    farr* numbers = farr_create(sizeof(int));
    const int seven = 7;
    Check(*(int*)farr_push_element(numbers, &seven) == 7, "array");
    farr_destroy(numbers);
    return failures;
}
