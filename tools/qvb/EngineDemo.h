#pragma once

#include <string>

// Creates a container with every table of a project under `directory`, stores a
// few records and walks them back, printing what it does.
int runEngineDemo(const std::string& directory);
