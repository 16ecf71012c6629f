// All that is read of an old bgfx: its API version.
#pragma once
#define BGFX_API_VERSION (121)
