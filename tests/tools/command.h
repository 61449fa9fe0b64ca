#pragma once

#include "tests/support/run_command.h"
#include "tests/support/scratch_folder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

using tv2_tests::ScratchFolder;

struct CommandResult : tv2_tests::CommandResult
{
    /// The standard output as JSON; a failed test and null when it is none.
    nlohmann::json Json() const
    {
        nlohmann::json json = nlohmann::json::parse(out, nullptr, false);
        EXPECT_FALSE(json.is_discarded()) << "not JSON: " << out << err;
        return json.is_discarded() ? nlohmann::json() : json;
    }
};

/// Runs the built command with these arguments and waits for it.
inline CommandResult RunTv2(const std::vector<std::string>& arguments)
{
    std::vector<std::string> command = {TV2_COMMAND};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return {tv2_tests::RunCommand(command)};
}

/// What "files" says of the only file.
inline nlohmann::json FileOf(const CommandResult& result)
{
    return result.Json()["files"][0];
}

/// The JSON has these values, each at its pointer.
inline void ExpectValues(const nlohmann::json& json,
                         const std::vector<std::pair<std::string, nlohmann::json>>& values)
{
    for (const auto& [pointer, value] : values)
        EXPECT_EQ(json.value(nlohmann::json::json_pointer(pointer), nlohmann::json("missing")), value)
            << pointer;
}

/// The text has each of the parts.
inline void ExpectParts(const std::string& text, const std::vector<std::string>& parts)
{
    for (const std::string& part : parts)
        EXPECT_NE(text.find(part), std::string::npos) << part << "\nin\n" << text;
}
