#pragma once

#define ZQ3DBASE_API __attribute__((visibility("default")))
