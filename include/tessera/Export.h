// Export control for the shared library. Everything is hidden by default; the public
// API is marked with TESSERA_API.
#ifndef TESSERA_EXPORT_H
#define TESSERA_EXPORT_H

#define TESSERA_API __attribute__((visibility("default")))

#endif
