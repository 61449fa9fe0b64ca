// tv2 view: files as one page for a browser, which plays them.

#include "tev2_loader/io/whole_file.h"
#include "tools/tv2/json_answer.h"
#include "tools/tv2/loaded_file.h"
#include "tools/tv2/notes.h"
#include "tools/tv2/system.h"
#include "tools/tv2/text.h"
#include "tools/tv2/verb.h"
#include "viewer/page.h"

#include <algorithm>
#include <filesystem>

namespace tv2
{

using TEV2_LOADER::Status;

namespace
{

/// The last part of a path, for people.
std::string FileNameOf(const std::string& path)
{
    const std::size_t separator = path.find_last_of("/\\");
    return separator == std::string::npos ? path : path.substr(separator + 1);
}

class ViewVerb : public Verb
{
public:
    std::vector<OptionRow> Options() override
    {
        return {
            {.name = "FILE",
             .value = &paths_,
             .help = "The .tv2 file, or two to show over each other; - is standard input",
             .required = true,
             .files = ".tv2"},
            {.name = "-o",
             .value = &output_,
             .help = "The page to write, ending in .html; otherwise a new one in the temporary folder",
             .check = NotEmpty,
             .files = ".html"},
            {.name = "--no-open", .value = &stay_, .help = "Write the page without opening the browser"},
        };
    }

    std::string Refusal(const std::set<std::string>&) const override
    {
        return paths_.size() > 2 ? "a page shows one file, or two over each other" : "";
    }

    void Run(VerbContext& context) override
    {
        if (const Status loaded = LoadAll(context); !loaded)
            return;
        tev2_viewer::Page page;
        std::vector<tev2_viewer::PageScene> scenes;
        for (const LoadedFile& file : files_)
            scenes.push_back({file.scene.get(), TitleOf(file)});
        const std::string first = paths_.front();
        if (const Status made = tev2_viewer::MakePage(scenes, page); !made)
            return context.Fail(first, files_.front().title + ": " + made.Reason(), kExitCouldNotRun);
        if (const Status named = NameOutput(scenes.front().title); !named)
            return context.Fail(first, named.Reason(), kExitCouldNotRun);
        if (const Status written = TEV2_LOADER::WriteWholeFile(output_, page.html); !written)
            return context.Fail(first, output_ + ": cannot be written: " + written.Reason(),
                                kExitCouldNotRun);
        Open(page.notes);
        Answer(page, context);
    }

private:
    /// Fails when a file cannot be shown, which is reported.
    Status LoadAll(VerbContext& context)
    {
        const auto refuse = [&](const std::string& file, const std::string& why, ExitCode code)
        {
            context.Fail(file, why, code);
            return Status::Failure(why);
        };
        if (!output_.empty() && !output_.ends_with(".html"))
            return refuse(paths_.front(), output_ + ": a page's name ends in .html", kExitCouldNotRun);
        for (const std::string& path : paths_)
        {
            std::error_code ignored; // a missing file equals no other
            if (path == output_ || std::filesystem::equivalent(path, output_, ignored))
                return refuse(path, output_ + ": the page would replace the file that it shows",
                              kExitCouldNotRun);
            LoadedFile& file = files_.emplace_back();
            if (const Status read = ReadFile(path, file); !read)
                return refuse(path, read.Reason(), kExitCouldNotRun);
            if (!file.loaded)
                return refuse(path, WhyNotLoaded(file), kExitFindings);
            file.image = {}; // the scene has all of it
        }
        return {};
    }

    /// The file's name, with its folders where another file has the same name.
    std::string TitleOf(const LoadedFile& file) const
    {
        const std::string name = FileNameOf(file.title);
        const auto same =
            std::count_if(files_.begin(), files_.end(),
                          [&](const LoadedFile& other) { return FileNameOf(other.title) == name; });
        return same == 1 ? name : file.title;
    }

    Status NameOutput(const std::string& title)
    {
        if (!output_.empty())
            return {};
        std::string folder;
        if (Status made = MakePrivateFolder(folder); !made)
            return made;
        std::string stem = FileNameOf(title);
        stem = stem.substr(0, stem.rfind('.'));
        output_ = (std::filesystem::path(folder) / (stem.empty() ? "scene.html" : stem + ".html")).string();
        return {};
    }

    void Open(std::vector<std::string>& notes)
    {
        if (stay_)
            return;
        std::error_code error;
        const std::string absolute = std::filesystem::absolute(output_, error).string();
        const Status opened = error ? Status::Failure(error.message()) : OpenInBrowser(absolute);
        opened_ = opened.Ok();
        if (!opened)
            notes.push_back("no browser was opened: " + opened.Reason() + ". Open " + output_ + " in one");
    }

    void Answer(const tev2_viewer::Page& page, VerbContext& context) const
    {
        if (context.json)
        {
            Json files = Json::array();
            for (const LoadedFile& file : files_)
                files.push_back({{"file", file.argument}});
            context.out << JsonAnswer({{"files", files},
                                       {"output", output_},
                                       {"bytes", page.html.size()},
                                       {"opened", opened_},
                                       {"notes", page.notes}});
            return;
        }
        context.out << Printable(output_) << '\n';
        PrintNotes(context.out, page.notes, OutputColumns());
    }

    std::vector<std::string> paths_;
    std::vector<LoadedFile> files_;
    std::string output_;
    bool stay_ = false;
    bool opened_ = false;
};

const VerbRegistration kViewVerb({
    .name = "view",
    .place = 72,
    .help = "A file as one page for a browser, which plays it, or two to compare",
    .examples = "tv2 view walk.tv2\n"
                "tv2 view before.tv2 after.tv2\n"
                "tv2 view --no-open walk.tv2 -o walk.html",
    .remarks = "The page has everything in it and loads nothing: it can be sent to anybody. A browser\n"
               "that may not read the temporary folder opens one that -o puts elsewhere.",
    .json_help = "Print JSON: the files, the page and whether a browser was opened",
    .writes_files = true,
    .make = Make<ViewVerb>,
});

} // namespace

} // namespace tv2
