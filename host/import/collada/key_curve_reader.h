#pragma once

/// From a <sampler> to its curve. Each array, source and sampler is read once, however many channels use it.

#include "host/import/collada/document_index.h"
#include "host/import/collada/key_curve.h"
#include "host/import/collada/xml_document.h"

#include <cstddef>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace mobu_host::collada
{

struct SamplerCurve
{
    std::shared_ptr<const KeyCurve> curve; // none: without keys
    bool lacks_tangents = false;           // a curve that has to be straight
    bool has_other_interpolation = false;  // neither of those that `Interpolation` knows: straight
};

class KeyCurveReader
{
public:
    KeyCurveReader(const XmlDocument& document, const DocumentIndex& index, std::size_t file_size);

    /// Of a <channel>. Throws ParseError for a curve that cannot be right.
    const SamplerCurve& Read(Element channel);

private:
    struct Accessor
    {
        Element element;
        Element array;
        std::size_t count = 0;
        std::size_t offset = 0;
        std::size_t stride = 1;
    };

    struct Ways
    {
        std::shared_ptr<const std::vector<Interpolation>> array;
        bool has_other = false;
    };

    template <typename Value>
    using ByElement = std::unordered_map<const void*, Value>;

    struct Inputs
    {
        Element input, output, interpolation, in_tangent, out_tangent; // sources
    };

    SamplerCurve ReadSampler(Element sampler);
    Inputs FindInputs(Element sampler) const;
    const Accessor& AccessorOf(Element source);
    Accessor ReadAccessor(Element source) const;
    const std::shared_ptr<const std::vector<double>>& NumbersOf(Element array);
    const Ways& WaysOf(Element array);
    const KeyTimes& TimesOf(Element source);
    KeyTimes ReadTimes(Element source);
    Rows<double> RowsOf(Element source);
    void ReadWays(Element source, KeyCurve& curve, SamplerCurve& sampler);
    Tangents ReadTangents(Element source, const KeyCurve& curve);
    void CheckFits(const Accessor& accessor, std::size_t size) const;
    void CheckCount(Element source, std::size_t count, std::size_t keys) const;

    const XmlDocument& document_;
    const DocumentIndex& index_;
    std::size_t times_left_; // that may still be copied out of arrays which hold other numbers as well
    ByElement<SamplerCurve> samplers_;
    ByElement<Accessor> accessors_;
    ByElement<std::shared_ptr<const std::vector<double>>> numbers_;
    ByElement<Ways> ways_;
    ByElement<KeyTimes> times_; // by source or, where they are all of an array, by array
};

} // namespace mobu_host::collada
