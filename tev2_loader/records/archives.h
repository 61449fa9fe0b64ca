#pragma once

// What the Load and Save of a record need.

#include "tev2_loader/archive/load.h"
#include "tev2_loader/archive/save.h"
#include "tev2_loader/tracks/visit_keys.h"
