// Export macro of the orrin32 shared library.
//
// Building the library defines ORRIN_BUILDING (CMake's DEFINE_SYMBOL); clients see the import side.
// On Windows the macro is dllexport/dllimport; elsewhere the library is built with hidden visibility
// and only what carries ORRIN_API is exported.
#pragma once

#if defined(_WIN32) || defined(__CYGWIN__)
#if defined(ORRIN_STATIC)
#define ORRIN_API
#elif defined(ORRIN_BUILDING)
#define ORRIN_API __declspec(dllexport)
#else
#define ORRIN_API __declspec(dllimport)
#endif
#else
#if defined(ORRIN_BUILDING)
#define ORRIN_API __attribute__((visibility("default")))
#else
#define ORRIN_API
#endif
#endif
