#pragma once

#define ZQBASE_API __attribute__((visibility("default")))
