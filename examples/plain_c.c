/* A program in C: the flat functions over a table, a flat array, a hash map and a command queue. */

#include <tessarin/containers.h>
#include <tessarin/tables.h>

#include <stdio.h>

/* A command begins with its own size. */
struct Order {
    uint32_t size;
    int amount;
};

static int Trade(TessarinTable* shop) {
    cmd* orders = cmd_create(256);
    int sold = 0;
    for (int amount = 1; amount <= 3; ++amount) {
        const struct Order order = {sizeof order, amount};
        cmd_push_element(orders, &order);
    }
    for (; !cmd_empty(orders); cmd_pop(orders)) sold += ((const struct Order*)cmd_front(orders))->amount;
    SetInteger(shop, "lamps", GetInteger(shop, "lamps") - sold);
    cmd_destroy(orders);
    return sold;
}

static int Count(void) {
    farr* finds = farr_create(sizeof(int));
    hm* seen = i32hm_create(16, sizeof(int));
    for (int i = 0; i < 10; ++i) {
        const int kind = i % 4, times = i32hm_get(seen, (uintptr_t)kind) ? *(int*)i32hm_get(seen, (uintptr_t)kind) : 0;
        const int more = times + 1;
        i32hm_set(seen, (uintptr_t)kind, &more);
        farr_push_element(finds, &kind);
    }
    const int result = (int)farr_count(finds) * 10 + *(int*)i32hm_get(seen, 1);
    i32hm_destroy(seen);
    farr_destroy(finds);
    return result;
}

int main(void) {
    TessarinTable* shop = CreateTable();
    if (shop == NULL) return 1;
    SetString(shop, "name", "Chandler");
    SetInteger(shop, "lamps", 20);
    const int sold = Trade(shop), counted = Count();
    printf("%s sold %d lamps and has %d left\n", GetString(shop, "name"), sold, GetInteger(shop, "lamps"));
    const int right = sold == 6 && GetInteger(shop, "lamps") == 14 && counted == 103;
    CloseTable(shop);
    return right ? 0 : 1;
}
