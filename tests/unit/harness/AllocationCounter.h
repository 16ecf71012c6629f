// How often the thread takes memory from the heap.
#pragma once

namespace zarvex::testing {

/// Calls of malloc and what is built on it (operator new, realloc, calloc) by the calling thread so far. Link
/// AllocationCounter.cpp into the executable itself.
long CountAllocations();

/// What bgfx itself takes when a uniform is set for a draw call: a debug build keeps a list of them.
long CountAllocationsOfAUniform();

} // namespace zarvex::testing
