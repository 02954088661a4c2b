// The header of spandsp, whose own code does not compile cleanly under this project's warnings.
#pragma once

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wshadow"
#include <spandsp.h>
#pragma GCC diagnostic pop
