// Memory for attribute objects, which collections hold by the hundred thousand. Each thread hands out the
// slots of a slab of 8 KiB in turn, so that attributes that are made together lie together, and building,
// copying, walking and releasing collections ask neither the heap nor the cache for each one. A slab counts
// its attributes and can be used anew when the last of them is gone, on whatever thread that goes; an
// attribute that outlives all others keeps its slab.
#pragma once

#include <cstddef>

namespace kivds {

/// Memory for an attribute, or for an object of a derived class, of `bytes` bytes, aligned as heap blocks
/// are; null when it cannot be had. Released with DeleteAttributeMemory.
void* NewAttributeMemory(std::size_t bytes) noexcept;
/// `memory` may be null.
void DeleteAttributeMemory(void* memory) noexcept;

/// Whether attributes made on threads that have made none yet share slabs, or have heap blocks of their own,
/// which is what tests that count, watch and fail allocations want. They share them from the start, but under
/// AddressSanitizer.
void ShareAttributeMemory(bool share) noexcept;

} // namespace kivds
