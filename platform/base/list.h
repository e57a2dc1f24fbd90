#pragma once

#include <cstddef>

#include "platform/base/allocator.h"
#include "platform/base/object.h"

/// What a list holds.
enum zItemType { zItemType_String };

/// Creates an empty growable list, to be given back with zObject_Destroy. `initialCapacity` is a hint in
/// items, 0 for none. The list hands out no blocks, so `allocator` makes no difference. zStatus_Unsupported
/// for another type; `*list` is null after a failure.
zStatus zArrayList_Construct(zHandle* list, zItemType type, std::size_t initialCapacity,
                             const zAllocator* allocator);

/// Appends a copy of `text`. zStatus_BadArgument for what is no list.
zStatus zArrayList_AddString(zHandle list, const char* text);

/// Number of items; 0 for what is no list.
std::size_t zArrayList_Count(zHandle list);

/// The item at the 0-based `index`, null behind the last. Owned by the list, valid until the list is changed.
const char* zArrayList_String(zHandle list, std::size_t index);
