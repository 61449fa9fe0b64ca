#pragma once

// How often this program, with its libraries, has called operator new.
long AllocationCount();
