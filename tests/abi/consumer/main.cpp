#include <tessarin/tessarin.h>

int main() {
    Tessarin::ITable* table = CreateTable();
    SetInteger(table, "answer", 42);
    int answer = GetInteger(table, "answer");
    CloseTable(table);
    return answer == 42 ? 0 : 1;
}
