#include "tools/tv2/exporter_module.h"
#include "tools/tv2/json_answer.h"
#include "tools/tv2/text.h"
#include "tools/tv2/verb.h"

#include <mobu_host/ui.h>

#include <memory>
#include <string>

namespace tv2
{

namespace
{

const char* PlaceOf(FBMenuItem& item)
{
    const FBMenuItemType type = item.Type;
    switch (type)
    {
    case kFBMenuItemMotionImport:
        return "motion import";
    case kFBMenuItemSceneImport:
        return "scene import";
    case kFBMenuItemMotionExport:
        return "motion export";
    case kFBMenuItemSceneExport:
        return "scene export";
    }
    return "unknown";
}

class MenuVerb : public Verb
{
public:
    std::vector<OptionRow> Options() override { return {ExporterOption(plugin_)}; }

    void Run(VerbContext& context) override
    {
        Json json;
        std::string error;
        const std::unique_ptr<mobu_host::Plugin> plugin = LoadExporter(plugin_, error);
        if (!plugin)
        {
            context.Complain(error, kExitCouldNotRun);
            json["error"] = error;
        }
        json["entries"] = Json::array();
        for (FBMenuItem* item : mobu_host::MenuItems())
        {
            json["entries"].push_back({{"caption", TextOf(item->Label)},
                                       {"description", TextOf(item->Description)},
                                       {"menu", PlaceOf(*item)},
                                       {"extension", TextOf(item->Extension)}});
        }
        if (context.json)
        {
            context.out << JsonAnswer(json);
            return;
        }
        for (const auto& entry : json["entries"])
        {
            const auto text = [&entry](const char* name) { return OneLine(entry[name].get<std::string>()); };
            context.out << text("menu") << ": \"" << text("caption") << "\" (" << text("description")
                        << "), files: " << text("extension") << '\n';
        }
    }

private:
    std::string plugin_;
};

const VerbRegistration kMenuVerb({
    .name = "menu",
    .place = 30,
    .help = "What the exporter adds to MotionBuilder's file menu",
    .examples = "tv2 menu\n"
                "tv2 menu --json | jq -r '.entries[].extension'",
    .remarks = "An entry is used with tv2 export --dialog.",
    .make = Make<MenuVerb>,
});

} // namespace

} // namespace tv2
