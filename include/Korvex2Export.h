#pragma once

/// @file
/// What the shared library shows.

/// Marks what the shared library shows to its clients; everything else is hidden.
#if defined(_WIN32)
#define KORVEX2_API
#else
#define KORVEX2_API __attribute__((visibility("default")))
#endif
