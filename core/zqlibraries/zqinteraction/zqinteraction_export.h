#pragma once

#define ZQINTERACTION_API __attribute__((visibility("default")))
