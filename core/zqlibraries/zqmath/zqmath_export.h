#pragma once

#define ZQMATH_API __attribute__((visibility("default")))
