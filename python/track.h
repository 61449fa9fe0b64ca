#pragma once

#include "python/scene.h"
#include "tev2_loader/format.h"
#include "tev2_loader/tracks/animatable.h"

#include <pybind11/pybind11.h>

#include <cstdint>
#include <iterator>
#include <memory>
#include <string>
#include <utility>

namespace tev2_python
{

/// A track as Python has it: its keys never change. Those of a scene are views of the scene's memory; a scene's track
/// is changed by putting another in its place.
struct Track
{
    std::shared_ptr<const void> owner; ///< of everything that has to live as long
    const TEV2_LOADER::TEV2_ANIMATABLE* keys;
};

/// The name of a kind of tracks in Python: "vector3".
const char* KindName(std::uint32_t kind);

/// A track made of a constant: a number, or one value as a sequence.
std::unique_ptr<TEV2_LOADER::TEV2_ANIMATABLE> Constant(std::uint32_t kind, pybind11::handle value);

/// A track of a record of a scene, or None. `keeper` is that of the record.
pybind11::object TrackOf(const std::shared_ptr<Scene>& scene, const std::shared_ptr<Keeper>& keeper,
                         const TEV2_LOADER::TEV2_ANIMATABLE* track);

/// The kind that a constant makes where a family has a place; of rotations slerp.
template <typename Family>
std::uint32_t UsualKind()
{
    std::uint32_t kind = TEV2_LOADER::kSlerpTrack;
    while (!Family::Has(kind))
        kind = (kind + 1) % std::uint32_t{std::size(TEV2_LOADER::kTrackKinds)};
    return kind;
}

/// What goes into a place for tracks of a family: a copy of a Track, a constant of anything else, null for None.
/// Raises TypeError for a Track of another family.
template <typename Family>
std::unique_ptr<Family> TrackFrom(pybind11::handle value)
{
    if (value.is_none())
        return nullptr;
    std::unique_ptr<TEV2_LOADER::TEV2_ANIMATABLE> made;
    if (!pybind11::isinstance<Track>(value))
        made = Constant(UsualKind<Family>(), value);
    else if (const auto& track = value.cast<const Track&>(); Family::Has(track.keys->GetType()))
        made = track.keys->Clone();
    else
        throw pybind11::type_error(std::string("expected a track of kind ") + KindName(UsualKind<Family>()) +
                                   ", got " + KindName(track.keys->GetType()));
    return std::unique_ptr<Family>(static_cast<Family*>(made.release()));
}

/// Puts a track into its place in a scene, and takes the old one out.
template <typename Family>
void SetTrack(Scene& scene, std::unique_ptr<Family>& place, std::unique_ptr<Family> track)
{
    scene.Remove(std::exchange(place, std::move(track)));
    scene.Changed();
}

/// Adds a property for a track of a record. Handle has `scene`, `keeper` and Record().
template <typename Handle, typename Record, typename Family, typename... Options>
void DefineTrack(pybind11::class_<Handle, Options...>& type, const char* name,
                 std::unique_ptr<Family> Record::*track, const char* doc)
{
    type.def_property(
        name,
        [track](const Handle& self)
        { return TrackOf(self.scene, self.keeper, (self.Record().*track).get()); },
        [track](const Handle& self, const pybind11::object& value)
        {
            std::unique_ptr<Family> made =
                TrackFrom<Family>(value); // first: it may run code that changes the scene
            SetTrack(*self.scene, self.Record().*track, std::move(made));
        },
        doc);
}

} // namespace tev2_python
