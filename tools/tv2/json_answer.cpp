#include "tools/tv2/json_answer.h"

#include "tools/tv2/text.h"

#include <cmath>
#include <utility>
#include <vector>

namespace tv2
{

namespace
{

void AddBytesOfTexts(Json& json)
{
    if (!json.is_structured())
        return;
    std::vector<std::pair<std::string, std::string>> added;
    for (auto member = json.begin(); member != json.end(); ++member)
    {
        AddBytesOfTexts(*member);
        if (json.is_object() && member->is_string() && !IsUtf8(member->get_ref<const std::string&>()))
            added.emplace_back(member.key() + "Bytes", PercentEncoded(member->get_ref<const std::string&>()));
    }
    for (const auto& [key, bytes] : added)
        json[key] = bytes;
}

std::string AnswerText(const Json& members, int indent)
{
    Json answer = {{"schema", kJsonSchema}};
    answer.update(members);
    AddBytesOfTexts(answer);
    return answer.dump(indent, ' ', false, Json::error_handler_t::replace) + '\n';
}

} // namespace

std::string JsonAnswer(const Json& members)
{
    return AnswerText(members, 2);
}

std::string JsonLine(const Json& members)
{
    return AnswerText(members, -1);
}

Json JsonFailure(const std::string& file, const std::string& error)
{
    return {{"file", file}, {"error", error}};
}

Json JsonFloat(float value)
{
    const std::string text = FloatText(value);
    return std::isfinite(value) ? Json::parse(text) : Json(text);
}

Json JsonDouble(double value)
{
    return std::isfinite(value) ? Json(value) : JsonFloat(static_cast<float>(value));
}

} // namespace tv2
