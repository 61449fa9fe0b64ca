// tv2 hash: whether files hold the same, and whether they show the same.

#include "tools/tv2/each_file.h"
#include "tools/tv2/scene_hash.h"
#include "tools/tv2/text.h"

namespace tv2
{

namespace
{

class HashVerb : public Verb
{
public:
    std::vector<OptionRow> Options() override
    {
        return {
            {.name = "FILE",
             .value = &files_,
             .help = "The .tv2 files; - is standard input",
             .required = true,
             .files = ".tv2"},
        };
    }

    void Run(VerbContext& context) override
    {
        AnswerForEachScene(files_, context,
                           [&](LoadedFile& file) -> Json
                           {
                               const std::string contents = HexOf(HashContents(file));
                               const std::string poses = HexOf(HashPoses(file));
                               if (!context.json)
                                   context.out << contents << ' ' << poses << "  " << Printable(file.title)
                                               << '\n';
                               return {{"file", file.argument}, {"contents", contents}, {"poses", poses}};
                           });
    }

private:
    std::vector<std::string> files_;
};

const VerbRegistration kHashVerb({
    .name = "hash",
    .place = 65,
    .help = "Whether files hold the same and show the same: hashes of contents and poses",
    .examples = "tv2 hash takes/*.tv2\n"
                "tv2 hash --json old.tv2 new.tv2 | jq -r '.files[] | .poses + \" \" + .file'",
    .remarks =
        "The first hash is of all bytes but the texts of the information record, so that exports of one "
        "take at different dates are equal. The second is of world matrices, lenses and switcher at 129 "
        "instants of the time range, to the last bit. Both are SHA-256; docs/json.md says what they cover.",
    .json_help = "Print JSON: an object with one entry of \"files\" for each file",
    .make = Make<HashVerb>,
});

} // namespace

} // namespace tv2
