#include "tools/tv2/batch_stamps.h"

#include "tev2_loader/io/whole_file.h"
#include "text/sha256.h"
#include "tools/tv2/module_path.h"
#include "tools/tv2/scene_search.h"
#include "tools/tv2/system.h"
#include "tools/tv2/text.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <memory>
#include <optional>
#include <sstream>

namespace tv2
{

using TEV2_LOADER::Status;

namespace
{

constexpr const char* kFileName = ".tv2-stamps";
constexpr const char* kVersionMember = "tv2Stamps";
constexpr int kVersion = 1;
constexpr std::chrono::steady_clock::duration kWrittenEvery = std::chrono::seconds(1);
constexpr int kPartOfTime = 10; // that writing takes at most: with many stamps it is done less often
constexpr int kMostWrites = 4;  // while other runs write too
constexpr int kDeepest = 8;     // of what a line holds; more would only cost stack

/// Options that change no byte of an exported file. All others count, also those that are yet to come.
constexpr std::string_view kChangeNoFile[] = {
    "-j",          "-o",           "--jobs",   "--output",
    "--config",    "--dry-run",    "--json",   "--make-folders",
    "--newer",     "--no-clobber", "--plugin", "--quiet",
    "--recursive", "--report",     "--shard",  "--yes",
};

struct CloseFile
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// What is at the beginning of a file.
struct Beginning
{
    std::uint64_t bytes = 0;
    std::string sha256;
};

/// Of a regular file; none where it cannot be read.
std::optional<Beginning> ReadBeginning(const std::string& path,
                                       std::uint64_t most = std::numeric_limits<std::uint64_t>::max())
{
    if (!FileStamp::Of(path).regular)
        return std::nullopt;
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "rb"));
    if (!file)
        return std::nullopt;
    Beginning beginning;
    Sha256 hash;
    std::vector<std::uint8_t> block(1 << 16);
    while (beginning.bytes < most)
    {
        const std::size_t wanted = std::min<std::uint64_t>(block.size(), most - beginning.bytes);
        const std::size_t count = std::fread(block.data(), 1, wanted, file.get());
        if (count == 0)
            break;
        hash.Add(std::span(block).first(count));
        beginning.bytes += count;
    }
    if (std::ferror(file.get()))
        return std::nullopt;
    beginning.sha256 = HexOf(hash.Finish());
    return beginning;
}

// Texts of the stamps are UTF-8, those with "%" percent-encoded bytes.

std::string Encoded(const std::string& bytes)
{
    return IsUtf8(bytes) && bytes.find('%') == std::string::npos ? bytes : PercentEncoded(bytes);
}

std::string Decoded(const std::string& text)
{
    std::string bytes;
    for (std::size_t at = 0; at < text.size(); ++at)
    {
        unsigned value = 0;
        const char* const digits = text.data() + at + 1;
        if (text[at] == '%' && at + 2 < text.size() &&
            std::from_chars(digits, digits + 2, value, 16).ptr == digits + 2)
        {
            bytes += static_cast<char>(value);
            at += 2;
        }
        else
        {
            bytes += text[at];
        }
    }
    return bytes;
}

std::string Absolute(const std::string& path)
{
    std::error_code error;
    const std::string absolute = std::filesystem::absolute(path, error).string();
    return error ? path : absolute;
}

std::string HashOfFiles(const std::vector<std::string>& paths)
{
    Sha256 all;
    for (const std::string& path : paths)
    {
        const std::optional<Beginning> file = ReadBeginning(path);
        const std::string digest = (file ? file->sha256 : std::string("none")) + '\n';
        all.Add({reinterpret_cast<const std::uint8_t*>(digest.data()), digest.size()});
    }
    return HexOf(all.Finish());
}

/// Of this program and its modules, as far as they are files of their own.
const std::string& HashOfCommand()
{
    namespace fs = std::filesystem;
    static const std::string hash = []
    {
        const std::string verbs = ModulePath("tv2_host_verbs");
        const std::string host = ModuleFileName("libfbsdk");
        return HashOfFiles({ProgramPath(), verbs,
                            (fs::path(verbs).parent_path().parent_path() / host).string(),
                            (fs::path(ProgramPath()).parent_path() / host).string()});
    }();
    return hash;
}

/// Empty where it is no regular file: others may have no end.
std::string ReadText(const std::string& path)
{
    std::string text;
    const std::unique_ptr<std::FILE, CloseFile> file(
        FileStamp::Of(path).regular ? std::fopen(path.c_str(), "rb") : nullptr);
    char block[1 << 14];
    while (const std::size_t count = file ? std::fread(block, 1, sizeof block, file.get()) : 0)
        text.append(block, count);
    return text;
}

/// A line of the stamps. Fails like a line that is no JSON where it is nested too deep.
Json ParsedLine(const std::string& line)
{
    bool is_deep = false;
    const auto look = [&](int depth, Json::parse_event_t, Json&) { return !(is_deep |= depth > kDeepest); };
    Json parsed = Json::parse(line, look, false);
    return is_deep ? Json() : parsed;
}

/// Why the bytes of a file are not those of a stamp; empty when they are.
std::string WhyChanged(const std::string& path, const Json& stamped, bool whole)
{
    const auto bytes = stamped.at("bytes").get<std::uint64_t>();
    const FileStamp now = FileStamp::Of(path);
    if (!now.exists)
        return Quoted(path) + " is not there";
    const auto size = static_cast<std::uint64_t>(now.size);
    const bool plausible = now.regular && (whole ? size == bytes : size >= bytes);
    const std::optional<Beginning> file = plausible ? ReadBeginning(path, bytes) : std::nullopt;
    return file && file->sha256 == stamped.at("sha256").get<std::string>() ? ""
                                                                           : Quoted(path) + " has changed";
}

} // namespace

std::string PathIn(const Json& answer, const std::string& member)
{
    const auto bytes = answer.find(member + "Bytes");
    return bytes == answer.end() ? answer.at(member).get<std::string>() : Decoded(bytes->get<std::string>());
}

std::string CircumstancesOf(const std::vector<GivenOption>& given, const std::string& exporter)
{
    std::vector<GivenOption> counted;
    std::ranges::copy_if(given, std::back_inserter(counted),
                         [](const GivenOption& option) {
                             return std::ranges::find(kChangeNoFile, option.name) == std::end(kChangeNoFile);
                         });
    std::ranges::stable_sort(counted, {}, &GivenOption::name);
    Json options = Json::array();
    for (const GivenOption& option : counted)
        for (const std::string& argument : option.arguments)
            options.push_back(Encoded(argument));
    const char* const epoch = std::getenv("SOURCE_DATE_EPOCH");
    return Json{{"options", options},
                {"SOURCE_DATE_EPOCH", Encoded(epoch != nullptr ? epoch : "")},
                {"command", HashOfCommand()},
                {"exporter", HashOfFiles({exporter})}}
        .dump();
}

BatchStamps::BatchStamps(std::string folder, const std::string& circumstances)
    : folder_(std::move(folder)), circumstances_(Json::parse(circumstances))
{
    circumstances_["folder"] = Encoded(Absolute(folder_));
}

std::string BatchStamps::Path() const
{
    return JoinPath(folder_, kFileName);
}

bool BatchStamps::Parse(const std::string& text, Stamps& stamps)
{
    std::istringstream lines(text);
    std::string line;
    try
    {
        if (!std::getline(lines, line) || ParsedLine(line).at(kVersionMember) != kVersion)
            return false;
        while (std::getline(lines, line))
        {
            Json stamp = ParsedLine(line);
            if (!stamp.at("scene").is_string())
                return false;
            for (const char* files : {"sources", "files"})
                for (const Json& file : stamp.at(files))
                    if (!file.at("file").is_string() || !file.at("sha256").is_string() ||
                        !file.at("bytes").is_number_unsigned())
                        return false;
            const std::string name = stamp.at("output").get<std::string>();
            stamps.insert_or_assign(name, std::move(stamp));
        }
    }
    catch (const Json::exception&)
    {
        stamps.clear();
        return false;
    }
    return text.ends_with('\n');
}

std::string BatchStamps::Read()
{
    const FileStamp stamp = FileStamp::Of(Path());
    if (!stamp.exists && stamp.error == ENOENT)
        return {};
    known_.clear();
    if (stamp.regular && Parse(ReadText(Path()), known_))
        return {};
    known_.clear();
    return Quoted(Path()) +
           " cannot be used (damaged, unreadable or of another version): every scene is exported";
}

std::string BatchStamps::WhyExport(const BatchScene& scene) const
{
    const auto found = known_.find(Encoded(scene.name));
    if (found == known_.end())
        return "it has no stamp";
    const Json& stamp = found->second;
    if (stamp.value("scene", "") != Encoded(Absolute(scene.scene)))
        return "its stamp is of another scene";
    const std::pair<const char*, const char*> reasons[] = {
        {"options", "its options have changed"},       {"SOURCE_DATE_EPOCH", "SOURCE_DATE_EPOCH has changed"},
        {"command", "this command has changed"},       {"exporter", "the exporter has changed"},
        {"folder", "the output folder was elsewhere"},
    };
    for (const auto& [member, reason] : reasons)
        if (stamp.value(member, Json()) != circumstances_.at(member))
            return reason;
    if (stamp.at("files").empty())
        return "its stamp has no files";
    for (const Json& file : stamp.at("files"))
        if (std::string why = WhyChanged(JoinPath(folder_, Decoded(file.at("file"))), file, true);
            !why.empty())
            return why;
    bool is_scene = true;
    for (const Json& file : stamp.at("sources"))
    {
        if (std::string why = WhyChanged(Decoded(file.at("file")), file, is_scene); !why.empty())
            return why;
        is_scene = false;
    }
    return is_scene ? "its stamp has no scene" : "";
}

std::vector<std::string> BatchStamps::FilesOf(const BatchScene& scene) const
{
    std::vector<std::string> paths;
    if (const auto found = known_.find(Encoded(scene.name)); found != known_.end())
        for (const Json& file : found->second.at("files"))
            paths.push_back(JoinPath(folder_, Decoded(file.at("file"))));
    return paths;
}

Status BatchStamps::Record(const BatchScene& scene, const Json& answer)
{
    Json stamp = {{"output", Encoded(scene.name)}, {"scene", Encoded(Absolute(scene.scene))}};
    stamp.update(circumstances_);
    stamp["sources"] = Json::array();
    for (const Json& source : answer.at("sources"))
    {
        stamp["sources"].push_back({{"file", Encoded(Absolute(PathIn(source, "file")))},
                                    {"bytes", source.at("bytes")},
                                    {"sha256", source.at("sha256")}});
    }
    stamp["files"] = Json::array();
    for (const Json& file : answer.at("files"))
    {
        const std::string path = PathIn(file, "output");
        const std::optional<Beginning> written = ReadBeginning(path);
        if (!file.value("ok", false) || file.value("skipped", false) || !written)
            return {};
        stamp["files"].push_back({{"file", Encoded(path.substr(JoinPath(folder_, "").size()))},
                                  {"bytes", written->bytes},
                                  {"sha256", written->sha256}});
    }
    recorded_.insert_or_assign(Encoded(scene.name), std::move(stamp));
    written_ = false;
    const auto due = last_written_ + std::max(kWrittenEvery, kPartOfTime * writing_took_);
    return std::chrono::steady_clock::now() < due ? Status() : Write();
}

Status BatchStamps::Write()
{
    const auto start = std::chrono::steady_clock::now();
    const FileStamp there = FileStamp::Of(Path());
    Status status = !there.exists || there.regular ? Status() : Status::Failure("it is not a file");
    for (int write = 0; !written_ && status && write < kMostWrites; ++write)
    {
        Stamps all;
        if (!Parse(ReadText(Path()), all))
            all = known_;
        for (const auto& [name, stamp] : recorded_)
            all.insert_or_assign(name, stamp);
        std::string text = Json{{kVersionMember, kVersion}}.dump() + '\n';
        for (const auto& [name, stamp] : all)
            text += stamp.dump() + '\n';
        status = TEV2_LOADER::WriteWholeFile(Path(), text);
        Stamps now;
        written_ =
            status && Parse(ReadText(Path()), now) &&
            std::ranges::all_of(recorded_, [&](const auto& mine)
                                { return now.contains(mine.first) && now.at(mine.first) == mine.second; });
    }
    last_written_ = std::chrono::steady_clock::now();
    writing_took_ = last_written_ - start;
    return status ? Status() : Status::Failure("cannot write " + Quoted(Path()) + ": " + status.Reason());
}

} // namespace tv2
