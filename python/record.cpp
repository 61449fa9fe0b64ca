#include "python/arrays.h"
#include "python/bindings.h"
#include "python/scene.h"
#include "python/text.h"
#include "python/track.h"
#include "tev2_loader/records/archives.h"

#include <concepts>
#include <cstring>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace tev2_python
{

namespace py = pybind11;
using namespace TEV2_LOADER;

namespace
{

/// "boneIndices" as Python writes it: "bone_indices".
std::string SnakeCase(const char* label)
{
    std::string name;
    for (const char* at = label; *at != '\0'; ++at)
    {
        if (*at >= 'A' && *at <= 'Z')
            name += {'_', static_cast<char>(*at - 'A' + 'a')};
        else
            name += *at;
    }
    return name;
}

template <typename Number>
concept Component =
    std::same_as<Number, float> || std::same_as<Number, std::uint32_t> || std::same_as<Number, std::int32_t>;

template <typename Value>
constexpr bool kIsWhole = std::is_integral_v<Value> || std::is_same_v<Value, TEV2_TRIANGLE>;

/// Sizes of one value in an array of them.
template <typename Value>
std::vector<py::ssize_t> ShapeOfOne()
{
    if constexpr (std::is_same_v<Value, TEV2_MATRIX_3X4>)
        return {3, 4};
    else if constexpr (std::is_same_v<Value, TEV2_VERTEX_FRAME>)
        return {2, 3};
    else if constexpr (Component<Value>)
        return {};
    else
        return {static_cast<py::ssize_t>(sizeof(Value) / sizeof(float))};
}

/// Makes a Record of Python from the fields of a record: arrays become views of the scene's memory, tracks Tracks,
/// records Records, and numbers and texts are copied.
class PythonArchive
{
public:
    PythonArchive(const std::shared_ptr<Scene>& scene, std::shared_ptr<Keeper> keeper, py::object owner)
        : scene_(scene), keeper_(std::move(keeper)), owner_(std::move(owner))
    {
    }

    py::dict fields;

    static constexpr bool Since(float /*version*/) { return true; }
    static constexpr bool UpTo(float /*version*/) { return false; }
    static void Layout() {}

    void Text(const char* label, const TEV2_WIDE_STRING& text) { Set(label, tev2_python::Text(text)); }

    void Texts(const char* label, const std::vector<TEV2_WIDE_STRING>& texts, Counts = Counts::kBoth)
    {
        py::list list;
        for (const TEV2_WIDE_STRING& text : texts)
            list.append(tev2_python::Text(text));
        Set(label, list);
    }

    template <typename Value_>
    void Value(const char* label, const Value_& value, Counts = Counts::kBoth)
    {
        if constexpr (Component<Value_>)
            Set(label, value == Value_(kNone) && kIsWhole<Value_> ? py::object(py::none()) : py::cast(value));
        else
            Set(label, std::apply([](const auto&... component) { return py::make_tuple(component...); },
                                  value.Components()));
    }

    template <typename Number>
    void Constant(const char* label, const Number& value, Number, Counts = Counts::kBoth)
    {
        Value(label, value);
    }

    void Bool(const char* label, bool flag, Counts = Counts::kBoth) { Set(label, py::bool_(flag)); }

    template <ChoiceEnum Enum>
    void Choice(const char* label, Enum choice, Counts = Counts::kBoth)
    {
        Set(label, py::str(ChoiceNames(Enum{})[static_cast<std::size_t>(choice)]));
    }

    void Bytes(const char* label, std::span<const std::uint8_t> bytes, Counts)
    {
        Set(label, py::bytes(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    }

    template <typename Element>
    void Values(const char* label, const std::vector<Element>& values, Counts = Counts::kBoth)
    {
        columns_ = 0;
        if constexpr (BlockElement<Element>)
        {
            Set(label, View(values));
        }
        else
        {
            py::list list;
            for (const Element& value : values)
                list.append(MakeValue(value));
            Set(label, list);
        }
    }

    template <typename Object, typename... More>
    void Record(const char* label, const Object& record, const More&...)
    {
        Set(label, Make(record));
    }

    template <typename Object, typename... Examine>
    void Records(const char* label, const std::vector<Object>& records, const Examine&...)
    {
        py::list list;
        for (const Object& record : records)
            list.append(Make(record));
        Set(label, list);
    }

    template <typename Object>
    void Optional(const char* label, const std::unique_ptr<Object>& record, Counts = Counts::kBoth)
    {
        Set(label, record ? Make(*record) : py::object(py::none()));
    }

    template <typename Number>
    void OptionalValue(const char* label, const std::optional<Number>& value)
    {
        if (value)
            Value(label, *value);
        else
            Set(label, py::none());
    }

    template <typename Object, typename... More>
    void Boxed(const char* label, const TEV2_BOXED<Object>& box, const More&... more)
    {
        Set(label, Make(*box, more...));
    }

    template <typename Object>
    void Track(const char* label, const std::unique_ptr<Object>& object, Counts = Counts::kBoth)
    {
        Set(label, MakeOwned(object));
    }

    template <typename Object>
    void Typed(const char* label, const std::unique_ptr<Object>& object, Counts = Counts::kBoth)
    {
        Set(label, MakeOwned(object));
    }

    template <typename Object>
    void Map(const char* label, const std::unique_ptr<Object>& map, Counts = Counts::kBoth)
    {
        Set(label, MakeOwned(map));
    }

    template <typename Object>
    void Objects(const char* label, const std::vector<std::unique_ptr<Object>>& objects,
                 Counts = Counts::kBoth)
    {
        py::list list;
        for (const auto& object : objects)
            list.append(MakeOwned(object));
        Set(label, list);
    }

    template <typename Object>
    void TypedObjects(const char* label, const std::vector<std::unique_ptr<Object>>& objects,
                      Counts = Counts::kBoth)
    {
        Objects(label, objects);
    }

    template <typename Object, typename Kept>
    void Effects(const char* label, const std::vector<std::unique_ptr<Object>>& effects, const Kept&,
                 Counts = Counts::kBoth)
    {
        Objects(label, effects);
    }

    void VertexCount(const char* label, std::uint32_t count, std::size_t /*least*/) { Value(label, count); }

    void ColumnCount(const char* label, std::uint32_t number)
    {
        Value(label, number);
        columns_ = number;
    }

    template <typename Element>
    void Column(const char* label, const std::vector<Element>& values, std::size_t /*count*/)
    {
        Set(label, View(values));
    }

    template <typename Element>
    void OptionalColumn(const char* label, const std::vector<Element>& values, std::size_t count)
    {
        if (values.empty())
            Set(label, py::none());
        else
            Column(label, values, count);
    }

    template <typename Element>
    void ColumnGroup(const char* label, const std::vector<std::vector<Element>>& columns,
                     std::size_t /*count*/)
    {
        py::list list;
        for (const auto& column : columns)
            list.append(View(column));
        Set(label, list);
    }

    template <typename Object>
    void Run(const char* label, const std::vector<Object>& records, std::size_t /*count*/)
    {
        Records(label, records);
    }

    template <typename Matrix>
    static void LegacyMatrix(const char*, const Matrix&)
    {
    }

    /// The Record of a record; `more` is passed to its Fields.
    template <typename Object, typename... More>
    py::object Make(const Object& record, const More&... more) const
    {
        PythonArchive inside(scene_, keeper_, owner_);
        if constexpr (sizeof...(More) == 0)
            VisitFields(record, inside);
        else
            Object::Fields(record, inside, more...);
        if constexpr (std::is_same_v<Object, TEV2_ANIM_VERTICES>)
        {
            inside.Column("positions", record.positions, 0); // at the scene's time
            inside.OptionalColumn("normals", record.normals, 0);
            inside.OptionalColumn("frames", record.frames, 0);
        }
        return py::module_::import("tev2._record").attr("Record")(inside.fields);
    }

    /// The same for an object that is owned through a pointer: a track, a record or nothing.
    template <typename Object>
    py::object MakeOwned(const std::unique_ptr<Object>& object) const
    {
        py::object made = py::none();
        if constexpr (std::derived_from<Object, TEV2_ANIMATABLE>)
        {
            made = TrackOf(scene_, keeper_, object.get());
        }
        else if (object)
        {
            made = MakeConcrete(*object);
        }
        return made;
    }

    /// Of a family: that of its class.
    template <typename Object>
    py::object MakeConcrete(const Object& object) const
    {
        if constexpr (requires { ClassesOf(object); })
        {
            py::object made = py::none();
            decltype(ClassesOf(object))::VisitAs(object,
                                                 [&](const auto& concrete) { made = Make(concrete); });
            return made;
        }
        else
        {
            return Make(object);
        }
    }

private:
    void Set(const char* label, const py::object& value) { fields[py::str(SnakeCase(label))] = value; }

    template <typename Element>
    static py::object MakeValue(const Element& value)
    {
        return std::apply([](const auto&... component) { return py::make_tuple(component...); },
                          value.Components());
    }

    /// (values, components of one), or (vertices, entries of one, ...).
    template <typename Element>
    py::array View(const std::vector<Element>& values) const
    {
        static_assert(BlockElement<Element>);
        using Number = std::conditional_t<std::is_arithmetic_v<Element>, Element,
                                          std::conditional_t<kIsWhole<Element>, std::uint32_t, float>>;
        std::vector<py::ssize_t> shape{static_cast<py::ssize_t>(values.size())};
        if (columns_ > 0)
            shape = {shape[0] / columns_, columns_};
        for (const py::ssize_t size : ShapeOfOne<Element>())
            shape.push_back(size);
        std::vector<py::ssize_t> strides(shape.size(), sizeof(Number));
        for (std::size_t i = shape.size() - 1; i > 0; --i)
            strides[i - 1] = strides[i] * shape[i];
        return ViewOf(py::dtype::of<Number>(), std::move(shape), std::move(strides), values.data(), owner_);
    }

    const std::shared_ptr<Scene>& scene_;
    std::shared_ptr<Keeper> keeper_;
    py::object owner_;
    std::uint32_t columns_ = 0; ///< entries of each vertex in the columns that follow
};

std::string LabelOf(const TEV2_LIST& list)
{
    return list.label;
}

std::string LabelOf(const TEV2_INSTANCE_LIST& list)
{
    return std::string(list.label) + '[' + std::to_string(list.index) + ']';
}

template <typename Record>
py::object RecordOf(const std::shared_ptr<Scene>& scene, const Record& record)
{
    const PythonArchive archive(scene, scene->KeeperOf(&record), py::cast(scene));
    return archive.MakeConcrete(record);
}

template <typename Record>
py::object RecordOf(const std::shared_ptr<Scene>& scene, const std::unique_ptr<Record>& record)
{
    return record ? RecordOf(scene, *record) : py::object(py::none());
}

template <typename Record>
py::object RecordOf(const std::shared_ptr<Scene>& scene, const TEV2::Array<Record>& records)
{
    py::list list;
    for (const auto& record : records)
        list.append(RecordOf(scene, record));
    return list;
}

py::object Records(const std::shared_ptr<Scene>& scene, const std::string& name)
{
    py::object found;
    if (name == "animMeshes")
        scene->Evaluate(); // what their vertices show
    VisitLists(scene->records,
               [&]<typename Member>(const auto& list, const Member& member)
               {
                   if constexpr (!std::is_same_v<Member, TEV2_MATRIX_HIERARCHY>)
                       if (LabelOf(list) == name)
                           found = RecordOf(scene, member);
               });
    if (!found)
        throw py::key_error("there are no records \"" + name + "\"; see Scene.record_names()");
    return found;
}

py::list RecordNames()
{
    py::list names;
    const TEV2 none;
    VisitLists(none,
               [&]<typename Member>(const auto& list, const Member&)
               {
                   if constexpr (!std::is_same_v<Member, TEV2_MATRIX_HIERARCHY>)
                       names.append(LabelOf(list));
               });
    return names;
}

py::list Meshes(const std::shared_ptr<Scene>& scene)
{
    py::list meshes;
    for (const char* list : {"rigids", "animMeshes", "morphMeshes", "weightedMeshes"})
        for (const py::handle mesh : Records(scene, list))
            if (!mesh.is_none())
                meshes.append(mesh);
    return meshes;
}

} // namespace

void BindRecords(py::module_& module)
{
    auto scene = py::class_<Scene, std::shared_ptr<Scene>>(module.attr("Scene"));
    scene.def(
        "records", Records, py::arg("name"),
        "The records of a list, as a list of Record, with None where the file has an empty entry; of a\n"
        "list that is one record, such as \"environment\", the Record itself. Raises KeyError for a "
        "name that\n"
        "is not among record_names().\n\n"
        "Numbers and texts are those at the time of the call; arrays are read-only views of the "
        "scene's\n"
        "memory, which keep the scene alive.");
    scene.def_static("record_names", RecordNames,
                     "The names that records() takes, as in the paths of findings: \"lights\", "
                     "\"weightedMeshes\", ...");
    scene.def_property_readonly(
        "meshes", Meshes,
        "All meshes: rigids, animMeshes, morphMeshes and weightedMeshes; a list of Record.");
    scene.def_property_readonly(
        "lights", [](const std::shared_ptr<Scene>& self) { return Records(self, "lights"); },
        "All lights: a list of Record.");
    scene.def_property_readonly(
        "materials", [](const std::shared_ptr<Scene>& self) { return Records(self, "materials"); },
        "All materials, with their maps: a list of Record. Sub-objects of meshes have indices in it.");
}

} // namespace tev2_python
