#pragma once

/// Marks what a program outside the library may link to. Everything else is hidden.
#define KAVIO_API __attribute__((visibility("default")))
