// Marks what the shared library exports.  Everything else in it stays hidden.
#pragma once

#define ORX_API __attribute__((visibility("default")))
