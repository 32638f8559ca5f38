#pragma once

/**
 * True when two interface names are equal byte for byte: case counts, nothing is trimmed.
 *
 * A null pointer is not a name and equals nothing.
 */
bool CompareInterface(char const* a, char const* b);
