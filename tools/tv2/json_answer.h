#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace tv2
{

// What --json prints. docs/json.md has the vocabulary, docs/json.schema.json the members of each verb's answer:
// "file" is what was read, as it was called on the command line; "output" what was written; "error" why there is nothing
// else; "path" the place of a value in a scene; "start" and "end" the ends of a time span; "bytes" a number of bytes.

/// Members keep their order.
using Json = nlohmann::ordered_json;

/// Of all answers: counts up when a member changes its name or meaning, or goes; a new one does not change it.
inline constexpr int kJsonSchema = 1;

/// The text of a whole answer, with "schema" before its members. A text that is not UTF-8, a file name for example, has
/// U+FFFD for each wrong byte, and beside it a member "<name>Bytes" with all of its bytes, percent-encoded.
std::string JsonAnswer(const Json& members);

/// The members about a file of which there is nothing else to say.
Json JsonFailure(const std::string& file, const std::string& error);

/// A float, as the shortest decimal that reads back to the same bits; a non-finite one is the string of FloatText.
Json JsonFloat(float value);

} // namespace tv2
