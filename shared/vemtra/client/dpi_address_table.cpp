/* dpi_address_table.cpp -- function and vtable lookup by address. */
#include "shared/vemtra/client/dpi_address_table.h"

#include <cstdlib>
#include <cstring>
#include <unordered_set>

#include "shared/vemtra/client/dpi_segment.h"

/* One node of a bucket chain. `info` is a DPI_FUNC_INFO or a DPI_VTBL_INFO
 * and `name` points at the name inside it. */
struct vemtra_address_node {
    uint64_t address;
    void *info;
    const char *name;
    vemtra_address_node *next;
};

/* A table: the bucket heads and, for appending, their tails; and the set
 * of addresses present, so that a new address is appended without walking
 * its chain (a profile of many functions makes the chains long). */
struct vemtra_address_table {
    vemtra_address_node *head[VEMTRA_ADDRESS_BUCKETS];
    vemtra_address_node *tail[VEMTRA_ADDRESS_BUCKETS];
    std::unordered_set<uint64_t> addresses;
};

static vemtra_address_table *func_table = nullptr;
static vemtra_address_table *vtbl_table = nullptr;

static void vemtra_Free_Func_Info(void *info)
{
    DPI_FUNC_INFO *func = static_cast<DPI_FUNC_INFO *>(info);
    free(func->function_name);
    free(func->file_name);
    free(func);
}

static void vemtra_Free_Vtbl_Info(void *info)
{
    DPI_VTBL_INFO *vtbl = static_cast<DPI_VTBL_INFO *>(info);
    free(vtbl->vtable_name);
    free(vtbl);
}

static void vemtra_Table_Release(vemtra_address_table *table, void (*free_info)(void *))
{
    if (table == nullptr)
        return;
    for (vemtra_address_node *node : table->head) {
        while (node != nullptr) {
            vemtra_address_node *next = node->next;
            free_info(node->info);
            free(node);
            node = next;
        }
    }
    delete table;
}

void vemtra_Address_Tables_Release(void)
{
    vemtra_Table_Release(func_table, vemtra_Free_Func_Info);
    vemtra_Table_Release(vtbl_table, vemtra_Free_Vtbl_Info);
    func_table = nullptr;
    vtbl_table = nullptr;
}

void vemtra_Address_Tables_Create(void)
{
    vemtra_Address_Tables_Release();
    func_table = new vemtra_address_table();
    vtbl_table = new vemtra_address_table();
}

/* True when the table already holds this address under this name. */
static bool vemtra_Table_Holds(const vemtra_address_table *table, uint64_t address, const char *name)
{
    if (table->addresses.count(address) == 0)
        return false;
    for (const vemtra_address_node *node = table->head[address % VEMTRA_ADDRESS_BUCKETS]; node != nullptr;
         node = node->next)
        if (node->address == address && strcmp(node->name, name) == 0)
            return true;
    return false;
}

static void vemtra_Table_Append(vemtra_address_table *table, uint64_t address, void *info, const char *name)
{
    size_t bucket = address % VEMTRA_ADDRESS_BUCKETS;
    vemtra_address_node *node = static_cast<vemtra_address_node *>(malloc(sizeof(vemtra_address_node)));
    node->address = address;
    node->info = info;
    node->name = name;
    node->next = nullptr;
    table->addresses.insert(address);
    if (table->tail[bucket] == nullptr)
        table->head[bucket] = node;
    else
        table->tail[bucket]->next = node;
    table->tail[bucket] = node;
}

void vemtra_Add_Func_Address(uint64_t address, const char *function_name, const char *file_name,
                             uint32_t word_b, uint32_t flags, float frequency)
{
    if (func_table == nullptr || vemtra_Table_Holds(func_table, address, function_name))
        return;
    DPI_FUNC_INFO *info = static_cast<DPI_FUNC_INFO *>(malloc(sizeof(DPI_FUNC_INFO)));
    info->function_name = strdup(function_name);
    info->file_name = strdup(file_name);
    info->word_b = word_b;
    info->flags = flags;
    info->frequency = frequency;
    vemtra_Table_Append(func_table, address, info, info->function_name);
}

void vemtra_Add_Vtbl_Address(uint64_t address, const char *vtable_name)
{
    if (vtbl_table == nullptr || vemtra_Table_Holds(vtbl_table, address, vtable_name))
        return;
    DPI_VTBL_INFO *info = static_cast<DPI_VTBL_INFO *>(malloc(sizeof(DPI_VTBL_INFO)));
    info->vtable_name = strdup(vtable_name);
    vemtra_Table_Append(vtbl_table, address, info, info->vtable_name);
}

/* The first node with `address`, unless the node right after it has the
 * same address (only that one neighbour is examined). */
static void *vemtra_Table_Lookup(const vemtra_address_table *table, uint64_t address)
{
    if (table == nullptr)
        return nullptr;
    for (const vemtra_address_node *node = table->head[address % VEMTRA_ADDRESS_BUCKETS]; node != nullptr;
         node = node->next) {
        if (node->address != address)
            continue;
        if (node->next != nullptr && node->next->address == address)
            return nullptr;
        return node->info;
    }
    return nullptr;
}

DPI_FUNC_INFO *VEMTRA_Lookup_Func(uint64_t address)
{
    return static_cast<DPI_FUNC_INFO *>(vemtra_Table_Lookup(func_table, address));
}

DPI_VTBL_INFO *VEMTRA_Lookup_Vtbl(uint64_t address)
{
    return static_cast<DPI_VTBL_INFO *>(vemtra_Table_Lookup(vtbl_table, address));
}
