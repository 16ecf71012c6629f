// How often the thread takes memory from the heap, and how much the process holds.
#pragma once

namespace zarvex::testing {

/// Calls of malloc and what is built on it (operator new, realloc, calloc) by the calling thread so far. Link
/// AllocationCounter.cpp into the executable itself.
long CountAllocations();

/// Bytes in the blocks that all threads of the process have taken from the heap and not given back. A block
/// may be a few bytes larger than was asked for.
long CountHeldBytes();

/// What bgfx itself takes when a uniform is set for a draw call: a debug build keeps a list of them.
long CountAllocationsOfAUniform();

/// What bgfx itself takes in each frame for each combination of textures and buffers that is bound in it;
/// none is one, too. From API version 147 on it lists them. Ends the frame.
long CountAllocationsOfBindings();

} // namespace zarvex::testing
