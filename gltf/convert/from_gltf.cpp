#include "gltf/convert/from_gltf.h"

#include <utility>

namespace tev2_gltf
{

class FromGltf::Impl
{
public:
    explicit Impl(gltf::Document& document) : document_(document) {}

    gltf::Document& document_;
};

FromGltf::FromGltf(gltf::Document& document, FromGltfOptions, ConversionReport&)
    : impl_(std::make_unique<Impl>(document))
{
}

FromGltf::~FromGltf() = default;

std::size_t FromGltf::SceneCount() const
{
    const std::size_t animations = impl_->document_.Count("animations");
    return animations > 0 ? animations : 1;
}

std::string_view FromGltf::SceneName(std::size_t scene) const
{
    return impl_->document_.PlaceOf("animations", scene).name;
}

std::unique_ptr<TEV2_LOADER::TEV2> FromGltf::MakeScene(std::size_t)
{
    throw gltf::Error("is not converted yet");
}

std::vector<InsideImage> FromGltf::InsideImages()
{
    return {};
}

} // namespace tev2_gltf
