#include "Core/Recognition/ModelFile.h"

#include <QFile>
#include <algorithm>
#include <array>
#include <cstring>
#include <optional>

namespace Velloro::ModelFile {

namespace {

constexpr uint32_t magic = 0x67676d6c; // "ggml"
constexpr uint32_t extentLimit = 1'000'000;
constexpr uint32_t quantizationVersionFactor = 1000;

// What all speech models have in common.
constexpr uint32_t commonAudioPositions = 1500;
constexpr uint32_t commonTextPositions = 448;
constexpr uint32_t headWidth = 64;
constexpr uint32_t frequencyBins = 201;
constexpr std::array<uint32_t, 5> widths = {384, 512, 768, 1024, 1280};
constexpr std::array<uint32_t, 3> vocabularySizes = {51864, 51865, 51866};
constexpr std::array<uint32_t, 2> melBandCounts = {80, 128};
/// Tensors outside the layers, of an audio layer, and of a text layer.
constexpr uint64_t commonTensors = 11;
constexpr uint64_t audioLayerTensors = 15;
constexpr uint64_t textLayerTensors = 24;

/// Walks over the bytes of a file; every step fails once one has led beyond the end. The file is
/// read, not mapped: another program may cut it short at any time.
class Reader
{
public:
    explicit Reader(QFile &file)
        : m_file(file)
        , m_size(static_cast<uint64_t>(file.size()))
    {
    }

    [[nodiscard]] bool atEnd() const { return m_position >= m_size; }

    std::optional<uint32_t> number()
    {
        uint32_t value = 0;
        if (m_size - m_position < sizeof value)
            return {};
        if (!isInWindow(sizeof value) && !moveWindow())
            return {};
        if (!isInWindow(sizeof value))
            return {};
        std::memcpy(&value, m_window.data() + (m_position - m_windowStart), sizeof value);
        m_position += sizeof value;
        return value;
    }

    bool skip(uint64_t count)
    {
        if (count > m_size - m_position)
            return false;
        m_position += count;
        return true;
    }

private:
    [[nodiscard]] bool isInWindow(uint64_t count) const
    {
        return m_position >= m_windowStart && m_position + count <= m_windowStart + m_windowLength;
    }

    bool moveWindow()
    {
        if (!m_file.seek(static_cast<qint64>(m_position)))
            return false;
        const qint64 length = m_file.read(m_window.data(), m_window.size());
        m_windowStart = m_position;
        m_windowLength = static_cast<uint64_t>(std::max<qint64>(length, 0));
        return true;
    }

    QFile &m_file;
    const uint64_t m_size;
    uint64_t m_position = 0;
    std::array<char, 8192> m_window;
    uint64_t m_windowStart = 0;
    uint64_t m_windowLength = 0;
};

/// How a ggml type stores numbers.
struct Layout
{
    /// In the header, and at each tensor.
    uint32_t fileType;
    uint32_t type;
    uint32_t blockElements;
    uint32_t blockBytes;
};

/// Those that speech models have: f32, f16, q4_0, q4_1, q5_0, q5_1, q8_0, q2_K to q6_K.
constexpr std::array layouts
    = {Layout{0, 0, 1, 4},       Layout{1, 1, 1, 2},       Layout{2, 2, 32, 18},
       Layout{3, 3, 32, 20},     Layout{8, 6, 32, 22},     Layout{9, 7, 32, 24},
       Layout{7, 8, 32, 34},     Layout{10, 10, 256, 84},  Layout{11, 11, 256, 110},
       Layout{12, 12, 256, 144}, Layout{13, 13, 256, 176}, Layout{14, 14, 256, 210}};

const Layout *layoutOf(uint32_t Layout::*number, uint32_t value)
{
    const auto layout = std::find_if(layouts.begin(), layouts.end(),
                                     [&](const Layout &one) { return one.*number == value; });
    return layout != layouts.end() ? &*layout : nullptr;
}

template <typename Values>
bool isOneOf(const Values &values, uint32_t value)
{
    return std::find(values.begin(), values.end(), value) != values.end();
}

/// The numbers at the beginning of the file, in their order.
struct Header
{
    uint32_t vocabulary = 0;
    uint32_t audioPositions = 0;
    uint32_t audioWidth = 0;
    uint32_t audioHeads = 0;
    uint32_t audioLayers = 0;
    uint32_t textPositions = 0;
    uint32_t textWidth = 0;
    uint32_t textHeads = 0;
    uint32_t textLayers = 0;
    uint32_t melBands = 0;
    uint32_t fileType = 0;

    bool read(Reader &reader)
    {
        for (uint32_t *const field :
             {&vocabulary, &audioPositions, &audioWidth, &audioHeads, &audioLayers, &textPositions,
              &textWidth, &textHeads, &textLayers, &melBands, &fileType}) {
            const auto value = reader.number();
            if (!value)
                return false;
            *field = *value;
        }
        return true;
    }

    /// Whether they fit each other and what is known of speech models. The library reserves memory
    /// and builds its graphs by them, and ends the process where they contradict each other.
    [[nodiscard]] bool isPlausible() const
    {
        return isOneOf(vocabularySizes, vocabulary) && audioPositions == commonAudioPositions
            && textPositions == commonTextPositions && isOneOf(widths, audioWidth)
            && textWidth == audioWidth && audioHeads == audioWidth / headWidth
            && textHeads == audioHeads && isOneOf(melBandCounts, melBands) && matrices();
    }

    /// How the matrices are stored; null for a way that no speech model has.
    [[nodiscard]] const Layout *matrices() const
    {
        return layoutOf(&Layout::fileType, fileType % quantizationVersionFactor);
    }

    [[nodiscard]] uint64_t tensors() const
    {
        return commonTensors + audioLayerTensors * audioLayers + textLayerTensors * textLayers;
    }
};

bool skipFilters(Reader &reader, const Header &header)
{
    return reader.number() == header.melBands && reader.number() == frequencyBins
        && reader.skip(uint64_t{header.melBands} * frequencyBins * sizeof(float));
}

bool skipVocabulary(Reader &reader, const Header &header)
{
    const auto count = reader.number();
    if (!count || *count > header.vocabulary)
        return false;
    for (uint32_t index = 0; index < *count; ++index) {
        const auto length = reader.number();
        if (!length || !reader.skip(*length))
            return false;
    }
    return true;
}

bool skipTensor(Reader &reader, const Header &header)
{
    const auto dimensions = reader.number();
    const auto nameLength = reader.number();
    const auto type = reader.number();
    if (!dimensions || !nameLength || !type || *dimensions > 4)
        return false;
    uint64_t elements = 1;
    for (uint32_t index = 0; index < *dimensions; ++index) {
        const auto extent = reader.number();
        if (!extent || *extent == 0 || *extent > extentLimit)
            return false;
        elements *= *extent;
        if (elements > (uint64_t{1} << 40))
            return false;
    }
    // Beside the matrices there are vectors and convolutions, in floats.
    const Layout *layout = layoutOf(&Layout::type, *type);
    if (!layout || (layout->blockElements > 1 && layout != header.matrices())
        || elements % layout->blockElements != 0)
        return false;
    return reader.skip(*nameLength)
        && reader.skip(elements / layout->blockElements * layout->blockBytes);
}

bool isWhole(Reader &reader)
{
    Header header;
    if (!header.read(reader) || !header.isPlausible() || !skipFilters(reader, header)
        || !skipVocabulary(reader, header))
        return false;
    for (uint64_t left = header.tensors(); left > 0; --left) {
        if (!skipTensor(reader, header))
            return false;
    }
    return reader.atEnd();
}

} // namespace

bool isForeign(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) && Reader(file).number() != magic;
}

bool isDamaged(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return false;
    Reader reader(file);
    return reader.number() == magic && !isWhole(reader);
}

} // namespace Velloro::ModelFile
