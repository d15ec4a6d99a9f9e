#include "Vantrel/NameOrder.h"

#include "Platform/LocalizedStandardCompare.h"

#include <string>

using Platform::FileURL;

std::vector<FileURL> inNameOrder(const std::vector<FileURL>& files) {
    std::vector<std::string> names;
    names.reserve(files.size());
    for (const FileURL& file : files) {
        names.push_back(file.lastPathComponent());
    }
    std::vector<FileURL> ordered;
    ordered.reserve(files.size());
    for (const std::size_t index : Platform::localizedStandardOrder(names)) {
        ordered.push_back(files[index]);
    }
    return ordered;
}
