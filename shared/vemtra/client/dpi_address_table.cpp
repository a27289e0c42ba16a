/* dpi_address_table.cpp -- function and vtable lookup by address. */
#include "shared/vemtra/client/dpi_address_table.h"

#include <cstdlib>
#include <cstring>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "shared/vemtra/client/dpi_segment.h"
#include "shared/vemtra/tallyfold/checked_alloc.h"

/* One node of a bucket chain. `info` is a DPI_FUNC_INFO or a DPI_VTBL_INFO
 * and `name` points at the name inside it. */
struct vemtra_address_node {
    uint64_t address;
    void *info;
    const char *name;
    vemtra_address_node *next;
};

/* An (address, name) pair the table holds; the name points into its node. */
struct vemtra_address_name {
    uint64_t address;
    const char *name;
};

struct vemtra_address_name_hash {
    size_t operator()(const vemtra_address_name &key) const
    {
        return std::hash<std::string_view>()(key.name) ^ (key.address * 0x9E3779B97F4A7C15ull);
    }
};

struct vemtra_address_name_equal {
    bool operator()(const vemtra_address_name &a, const vemtra_address_name &b) const
    {
        return a.address == b.address && strcmp(a.name, b.name) == 0;
    }
};

/* A table: the bucket chains in the order of the format, and beside them
 * two indexes so that neither an insertion nor a lookup walks a chain (a
 * profile of many functions makes the chains long, and many segments may
 * share one address): the first node of each address, and the set of
 * (address, name) pairs present. */
struct vemtra_address_table {
    vemtra_address_node *head[VEMTRA_ADDRESS_BUCKETS];
    vemtra_address_node *tail[VEMTRA_ADDRESS_BUCKETS];
    std::unordered_map<uint64_t, vemtra_address_node *> first;
    std::unordered_set<vemtra_address_name, vemtra_address_name_hash, vemtra_address_name_equal> names;
};

static vemtra_address_table *func_table = nullptr;
static vemtra_address_table *vtbl_table = nullptr;

/* The tables are filled on the first lookup, by the open profile's own
 * routine: only the call graph looks functions up by address, and every
 * other run would pay for two hash tables of every segment unused. */
static void (*fill_tables)(void *context) = nullptr;
static void *fill_context = nullptr;

/* The records' names are the open profile's, so a record is freed alone. */
static void vemtra_Table_Release(vemtra_address_table *table)
{
    if (table == nullptr)
        return;
    for (vemtra_address_node *node : table->head) {
        while (node != nullptr) {
            vemtra_address_node *next = node->next;
            free(node->info);
            free(node);
            node = next;
        }
    }
    delete table;
}

void vemtra_Address_Tables_Release(void)
{
    fill_tables = nullptr;
    fill_context = nullptr;
    vemtra_Table_Release(func_table);
    vemtra_Table_Release(vtbl_table);
    func_table = nullptr;
    vtbl_table = nullptr;
}

void vemtra_Address_Tables_Create(void (*fill)(void *context), void *context)
{
    vemtra_Address_Tables_Release();
    func_table = new vemtra_address_table();
    vtbl_table = new vemtra_address_table();
    fill_tables = fill;
    fill_context = context;
}

/* True when the table already holds this address under this name. */
static bool vemtra_Table_Holds(const vemtra_address_table *table, uint64_t address, const char *name)
{
    return table->names.count(vemtra_address_name{address, name}) != 0;
}

static void vemtra_Table_Append(vemtra_address_table *table, uint64_t address, void *info, const char *name)
{
    size_t bucket = address % VEMTRA_ADDRESS_BUCKETS;
    vemtra_address_node *node = static_cast<vemtra_address_node *>(VEMTRA_Malloc(sizeof(vemtra_address_node)));
    node->address = address;
    node->info = info;
    node->name = name;
    node->next = nullptr;
    table->first.emplace(address, node);
    table->names.insert(vemtra_address_name{address, name});
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
    DPI_FUNC_INFO *info = static_cast<DPI_FUNC_INFO *>(VEMTRA_Malloc(sizeof(DPI_FUNC_INFO)));
    info->function_name = const_cast<char *>(function_name);
    info->file_name = const_cast<char *>(file_name);
    info->word_b = word_b;
    info->flags = flags;
    info->frequency = frequency;
    vemtra_Table_Append(func_table, address, info, info->function_name);
}

void vemtra_Add_Vtbl_Address(uint64_t address, const char *vtable_name)
{
    if (vtbl_table == nullptr || vemtra_Table_Holds(vtbl_table, address, vtable_name))
        return;
    DPI_VTBL_INFO *info = static_cast<DPI_VTBL_INFO *>(VEMTRA_Malloc(sizeof(DPI_VTBL_INFO)));
    info->vtable_name = const_cast<char *>(vtable_name);
    vemtra_Table_Append(vtbl_table, address, info, info->vtable_name);
}

/* The first node with `address`, unless the node right after it in its
 * chain has the same address (only that one neighbour is examined). */
static void *vemtra_Table_Lookup(const vemtra_address_table *table, uint64_t address)
{
    if (fill_tables != nullptr) {
        void (*fill)(void *) = fill_tables;
        fill_tables = nullptr;
        fill(fill_context);
    }
    if (table == nullptr)
        return nullptr;
    auto found = table->first.find(address);
    if (found == table->first.end())
        return nullptr;
    const vemtra_address_node *node = found->second;
    if (node->next != nullptr && node->next->address == address)
        return nullptr;
    return node->info;
}

DPI_FUNC_INFO *VEMTRA_Lookup_Func(uint64_t address)
{
    return static_cast<DPI_FUNC_INFO *>(vemtra_Table_Lookup(func_table, address));
}

DPI_VTBL_INFO *VEMTRA_Lookup_Vtbl(uint64_t address)
{
    return static_cast<DPI_VTBL_INFO *>(vemtra_Table_Lookup(vtbl_table, address));
}
