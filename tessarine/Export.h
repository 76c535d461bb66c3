#pragma once

/// Marks what hosts may call. The library is compiled with hidden visibility, so a public class or free function that
/// is not defined in its header carries TESSARINE_API. TESSARINE_STATIC is defined for users of a static library (the
/// package does it), TESSARINE_BUILDING while the library itself is compiled.
#if defined(TESSARINE_STATIC)
#define TESSARINE_API
#elif defined(_WIN32)
#if defined(TESSARINE_BUILDING)
#define TESSARINE_API __declspec(dllexport)
#else
#define TESSARINE_API __declspec(dllimport)
#endif
#else
#define TESSARINE_API __attribute__((visibility("default")))
#endif
