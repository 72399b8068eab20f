// Export control for the one shared library that Plaint, Skein and Tessera all go into.
// Everything is hidden by default; the public API is marked with TESSERA_API. It sits at
// the top of include/ because it belongs to no area and every area needs it.
#ifndef TESSERA_EXPORT_H
#define TESSERA_EXPORT_H

#if __cplusplus < 201703L
#error "Tessera needs C++17 or later: compile with -std=c++17 or a newer standard"
#endif

#define TESSERA_API __attribute__((visibility("default")))

#endif
