// A host of the installed library: it compiles, links and runs with nothing but the package.

#include <tessarin/tessarin.h>

int main() {
    Tessarin::ITable* table = CreateTable();
    SetInteger(table, "depth", 42);
    const int depth = GetInteger(table, "depth");
    CloseTable(table);
    return depth == 42 ? 0 : 1;
}
