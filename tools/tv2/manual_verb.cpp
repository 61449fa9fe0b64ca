// `tv2 manual`, for the build and for packages: the manual pages and the completion of the command, made from the
// options of its verbs.

#include "tev2_loader/io/whole_file.h"
#include "tools/tv2/completion_script.h"
#include "tools/tv2/host_verbs.h"
#include "tools/tv2/manual_page.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace tv2
{

using TEV2_LOADER::Status;

namespace
{

/// The day of SOURCE_DATE_EPOCH; empty where that is not set, so that pages are always the same.
std::string DateOfPages()
{
    const char* const text = std::getenv("SOURCE_DATE_EPOCH");
    std::int64_t seconds = 0;
    if (text == nullptr || std::from_chars(text, text + std::strlen(text), seconds).ec != std::errc())
        return {};
    const std::chrono::sys_days day =
        std::chrono::floor<std::chrono::days>(std::chrono::sys_seconds(std::chrono::seconds(seconds)));
    const std::chrono::year_month_day date(day);
    std::array<char, 32> shown{};
    std::snprintf(shown.data(), shown.size(), "%04d-%02u-%02u", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
    return shown.data();
}

class ManualVerb : public Verb
{
public:
    std::vector<OptionRow> Options() override
    {
        return {{.name = "FOLDER",
                 .value = &folder_,
                 .help = "Where to make man/man1/ and bash-completion/completions/",
                 .required = true,
                 .check = NotEmpty,
                 .files = "/"}};
    }

    void Run(VerbContext& context) override
    {
        if (const Status made = Make(); !made)
            context.Complain(made.Reason(), kExitCouldNotRun);
    }

private:
    Status Make() const
    {
        std::string error;
        std::vector<VerbRow> rows = AllVerbs(error);
        if (!error.empty())
            return Status::Failure(error);
        std::erase_if(rows, [](const VerbRow& row) { return row.hidden; });
        const std::string date = DateOfPages();
        if (Status written = Write("man/man1", "tv2.1", CommandPage(rows, date)); !written)
            return written;
        for (const VerbRow& row : rows)
        {
            const std::string name = "tv2-" + std::string(row.name) + ".1";
            if (Status written = Write("man/man1", name, VerbPage(row, date)); !written)
                return written;
        }
        return Write("bash-completion/completions", "tv2", CompletionScript(rows));
    }

    Status Write(const std::string& below, const std::string& name, const std::string& text) const
    {
        const std::string folder = folder_ + "/" + below;
        std::error_code error;
        std::filesystem::create_directories(folder, error);
        if (error)
            return Status::Failure(folder + ": " + error.message());
        const Status written = TEV2_LOADER::WriteWholeFile(folder + "/" + name, text);
        return written ? written : Status::Failure(folder + "/" + name + ": " + written.Reason());
    }

    std::string folder_;
};

const VerbRegistration kManualVerb({
    .name = "manual",
    .place = 1000,
    .help = "Makes the manual pages and the completion of this command",
    .examples = "tv2 manual share",
    .json_help = "",
    .writes_files = true,
    .hidden = true,
    .make = Make<ManualVerb>,
});

} // namespace

} // namespace tv2
