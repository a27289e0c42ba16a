/* dpi_address_table.h -- the two process-wide address tables of the most
 * recently opened dynamic profile: function addresses and vtable addresses.
 *
 * Each is a chained hash table of 991 buckets keyed by the address modulo
 * 991. A node whose address and name equal a new one's is not inserted
 * again; any other is appended at the end of its bucket's chain. A lookup
 * takes the first node with the address and calls it ambiguous (null) when
 * the node right after it has the same address. The open profile fills
 * them on the first lookup, in file order, which gives the same tables as
 * filling them while opening; a run without lookups never builds them.
 */
#ifndef VEMTRA_CLIENT_DPI_ADDRESS_TABLE_H
#define VEMTRA_CLIENT_DPI_ADDRESS_TABLE_H

#include <cstdint>

#include "shared/vemtra/tallyfold/vemtra_records.h"

/* Releases any previous tables and creates both empty. `fill`, when given,
 * is called with `context` right before the first lookup, to insert the
 * open profile's functions and virtual tables. */
void vemtra_Address_Tables_Create(void (*fill)(void *context) = nullptr, void *context = nullptr);

/* Empties and releases both tables; lookups then return null. */
void vemtra_Address_Tables_Release(void);

/* Inserts a function. The names are kept, not copied: they are the open
 * profile's and outlive the tables (closing the profile releases them). */
void vemtra_Add_Func_Address(uint64_t address, const char *function_name, const char *file_name,
                             uint32_t word_b, uint32_t flags, float frequency);

/* Inserts a virtual table; the name is kept, as above. */
void vemtra_Add_Vtbl_Address(uint64_t address, const char *vtable_name);

#endif
