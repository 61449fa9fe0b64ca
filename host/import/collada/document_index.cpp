#include "host/import/collada/document_index.h"

#include "host/import/collada/transforms.h"

#include <algorithm>
#include <tuple>
#include <unordered_map>

namespace mobu_host::collada
{
namespace
{

enum class Kind
{
    Other,
    Node,
    InstanceNode,
    VisualScene,
    Animation,
    Channel,
    Sampler,
    Source,
    Array,
    Camera,
    Clip
};

Kind KindOf(std::string_view name)
{
    static const std::unordered_map<std::string_view, Kind> kKinds{
        {"node", Kind::Node},
        {"instance_node", Kind::InstanceNode},
        {"visual_scene", Kind::VisualScene},
        {"animation", Kind::Animation},
        {"channel", Kind::Channel},
        {"sampler", Kind::Sampler},
        {"source", Kind::Source},
        {"float_array", Kind::Array},
        {"Name_array", Kind::Array},
        {"IDREF_array", Kind::Array},
        {"camera", Kind::Camera},
        {"animation_clip", Kind::Clip},
    };
    const auto found = kKinds.find(name);
    return found == kKinds.end() ? Kind::Other : found->second;
}

bool ComesBefore(const DocumentIndex::Sid& a, const DocumentIndex::Sid& b)
{
    return std::tie(a.parent, a.sid) < std::tie(b.parent, b.sid);
}

const DocumentIndex::Sid* FindSid(const std::vector<DocumentIndex::Sid>& sids, std::uint32_t parent,
                                  std::string_view sid)
{
    const DocumentIndex::Sid sought{parent, 0, sid};
    const auto found = std::lower_bound(sids.begin(), sids.end(), sought, ComesBefore);
    return found != sids.end() && !ComesBefore(sought, *found) ? &*found : nullptr;
}

class Indexer
{
public:
    explicit Indexer(DocumentIndex& index) : index_(index) {}

    // Without recursion: elements may be nested as deep as the file is long.
    void Walk(Element root)
    {
        Element element = root;
        while (element)
        {
            Enter(element);
            Element next = element.first_child();
            while (!next)
            {
                Leave(element);
                if (element == root)
                    return;
                next = element.next_sibling();
                if (!next)
                    element = element.parent();
            }
            element = next;
        }
    }

    void Sort()
    {
        index_.node_ids.Sort();
        index_.visual_scene_ids.Sort();
        index_.animation_ids.Sort();
        for (IdTable<Element>* table : {&index_.sources, &index_.arrays, &index_.samplers, &index_.cameras})
            table->Sort();
        for (std::vector<DocumentIndex::Sid>* sids : {&index_.transform_sids, &index_.node_sids})
            std::stable_sort(sids->begin(), sids->end(), ComesBefore);
    }

private:
    struct OpenNode
    {
        std::uint32_t record;
        std::uint32_t last_child = kNone;
        std::uint32_t last_instance = kNone;
        std::uint32_t transforms = 0;
    };

    void Enter(Element element)
    {
        const std::string_view id = Attribute(element, "id");
        switch (KindOf(element.name()))
        {
        case Kind::Node:
            EnterNode(element, id);
            break;
        case Kind::VisualScene:
            index_.visual_scenes.push_back(static_cast<std::uint32_t>(index_.nodes.size()));
            index_.visual_scene_ids.Add(id, index_.visual_scenes.back());
            OpenRecord(element);
            break;
        case Kind::InstanceNode:
            AddInstance(element);
            break;
        case Kind::Animation:
            EnterAnimation(element, id);
            break;
        case Kind::Channel:
            index_.channels.push_back(element);
            break;
        case Kind::Sampler:
            index_.samplers.Add(id, element);
            break;
        case Kind::Source:
            index_.sources.Add(id, element);
            break;
        case Kind::Array:
            index_.arrays.Add(id, element);
            break;
        case Kind::Camera:
            index_.cameras.Add(id, element);
            break;
        case Kind::Clip:
            index_.clips.push_back(element);
            break;
        case Kind::Other:
            AddTransform(element);
            break;
        }
    }

    void Leave(Element element)
    {
        if (!open_nodes_.empty() && index_.nodes[open_nodes_.back().record].element == element)
        {
            const OpenNode& node = open_nodes_.back();
            NodeRecord& record = index_.nodes[node.record];
            (node.last_child == kNone ? record.first_child : index_.nodes[node.last_child].next) =
                record.first_instance;
            open_nodes_.pop_back();
        }
        if (!open_animations_.empty() && index_.animations[open_animations_.back()].element == element)
        {
            index_.animations[open_animations_.back()].end_channel =
                static_cast<std::uint32_t>(index_.channels.size());
            open_animations_.pop_back();
        }
    }

    std::uint32_t AddRecord(Element element)
    {
        const auto record = static_cast<std::uint32_t>(index_.nodes.size());
        index_.nodes.push_back({.element = element});
        return record;
    }

    void OpenRecord(Element element) { open_nodes_.push_back({.record = AddRecord(element)}); }

    // True directly below the node that is open.
    bool IsChild(Element element) const
    {
        return !open_nodes_.empty() && index_.nodes[open_nodes_.back().record].element == element.parent();
    }

    void Append(std::uint32_t& first, std::uint32_t& last, std::uint32_t record)
    {
        (last == kNone ? first : index_.nodes[last].next) = record;
        last = record;
    }

    void EnterNode(Element element, std::string_view id)
    {
        const auto record = static_cast<std::uint32_t>(index_.nodes.size());
        index_.node_ids.Add(id, record);
        const bool is_child = IsChild(element);
        OpenRecord(element);
        if (!is_child)
            return;
        OpenNode& parent = open_nodes_[open_nodes_.size() - 2];
        if (const std::string_view sid = Attribute(element, "sid"); !sid.empty())
            index_.node_sids.push_back({parent.record, record, sid});
        Append(index_.nodes[parent.record].first_child, parent.last_child, record);
    }

    void AddInstance(Element element)
    {
        if (!IsChild(element))
            return;
        ++index_.instance_count;
        const std::uint32_t record = AddRecord(element);
        OpenNode& parent = open_nodes_.back();
        Append(index_.nodes[parent.record].first_instance, parent.last_instance, record);
    }

    void EnterAnimation(Element element, std::string_view id)
    {
        const auto animation = static_cast<std::uint32_t>(index_.animations.size());
        const std::uint32_t parent = open_animations_.empty() ? kNone : open_animations_.back();
        index_.animation_ids.Add(id, animation);
        index_.animations.push_back({.element = element,
                                     .parent = parent,
                                     .first_channel = static_cast<std::uint32_t>(index_.channels.size())});
        open_animations_.push_back(animation);
    }

    void AddTransform(Element element)
    {
        if (!IsChild(element) || !IsTransform(element))
            return;
        OpenNode& node = open_nodes_.back();
        if (const std::string_view sid = Attribute(element, "sid"); !sid.empty())
            index_.transform_sids.push_back({node.record, node.transforms, sid});
        ++node.transforms;
    }

    DocumentIndex& index_;
    std::vector<OpenNode> open_nodes_;
    std::vector<std::uint32_t> open_animations_;
};

} // namespace

std::optional<TransformPlace> DocumentIndex::FindTransform(std::uint32_t node, std::string_view sid) const
{
    const Sid* found = FindSid(transform_sids, node, sid);
    return found ? std::optional(TransformPlace{node, found->value}) : std::nullopt;
}

std::uint32_t DocumentIndex::FindChild(std::uint32_t node, std::string_view sid) const
{
    const Sid* found = FindSid(node_sids, node, sid);
    return found ? found->value : kNone;
}

DocumentIndex IndexDocument(const XmlDocument& document)
{
    DocumentIndex index;
    Indexer indexer(index);
    indexer.Walk(document.Root());
    indexer.Sort();
    return index;
}

} // namespace mobu_host::collada
