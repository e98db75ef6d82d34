#pragma once

// Symbols of the basepool shared library. Everything else is hidden (-fvisibility=hidden).
#define BASEPOOL_API __attribute__((visibility("default")))
