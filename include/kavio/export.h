#pragma once

#if __cplusplus < 202002L
#error "Kavio needs C++20: compile with -std=c++20 or later, or link to Kavio::kavio with CMake, which sees to that"
#endif

/// Marks what a program outside the library may link to. Everything else is hidden where the compiler can hide it;
/// where it cannot, the build exports everything.
#if defined(__GNUC__)
#define KAVIO_API __attribute__((visibility("default")))
#else
#define KAVIO_API
#endif
