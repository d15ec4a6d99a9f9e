#pragma once

#include "Platform/FileURL.h"

#include <vector>

/// The files in the order of a file browser by their names; names that compare equal keep their order. Any thread.
std::vector<Platform::FileURL> inNameOrder(const std::vector<Platform::FileURL>& files);
