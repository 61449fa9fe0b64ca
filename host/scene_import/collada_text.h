#pragma once

// What the import library drops of a Collada document and is needed beside the tree it returns.

#include <map>
#include <string>
#include <string_view>

namespace mobu_host
{

struct ColladaText
{
    // The document with what the library needs to understand every camera: a name, and an aspect beside a vertical
    // angle.
    std::string document;

    std::map<std::string, std::string> node_names; // id of a node -> the name that its author gave it
    bool has_curves = false; // some of its animation does not go straight from key to key
};

// Looks through the tags of a document; never fails, damage is left for the import library to report.
ColladaText ScanCollada(std::string_view document);

} // namespace mobu_host
