#pragma once

#define ZQ3DVIEW_API __attribute__((visibility("default")))
