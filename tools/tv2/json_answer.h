#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace tv2
{

// The answers of --json. docs/json.md has the vocabulary, docs/json.schema.json the members of each verb's answer.

/// Members keep their order.
using Json = nlohmann::ordered_json;

/// Incremented when a member is renamed, removed or changes its meaning; not for new members.
inline constexpr int kJsonSchema = 1;

/// The text of an answer: "schema", then the members. A string that is not UTF-8, such as a file name, gets U+FFFD for
/// each invalid byte, and a member "<name>Bytes" with all of its bytes, percent-encoded.
std::string JsonAnswer(const Json& members);

/// The same on one line, for a run with an answer for each part of its work.
std::string JsonLine(const Json& members);

/// The members for a file that could not be processed.
Json JsonFailure(const std::string& file, const std::string& error);

/// A number with the digits of FloatText; for a non-finite value the string.
Json JsonFloat(float value);

/// A number of double precision; for a non-finite value the string.
Json JsonDouble(double value);

} // namespace tv2
