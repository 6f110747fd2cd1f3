#include "Core/ModelFile.h"

#include <QFile>
#include <algorithm>
#include <array>
#include <cstring>
#include <optional>

namespace Velloro::ModelFile {

namespace {

constexpr uint32_t magic = 0x67676d6c; // "ggml"
constexpr int32_t headerLimit = 1'000'000;
constexpr int32_t quantizationVersionFactor = 1000;
constexpr int32_t ftypeLimit = 32;

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

/// Bytes of `elements` numbers of a ggml type; absent for types that no speech model has.
std::optional<uint64_t> byteCount(uint32_t type, uint64_t elements)
{
    struct Layout
    {
        uint32_t type;
        uint32_t blockElements;
        uint32_t blockBytes;
    };
    // f32, f16, q4_0, q4_1, q5_0, q5_1, q8_0, q2_K to q6_K
    static constexpr std::array layouts = {
        Layout{0, 1, 4},      Layout{1, 1, 2},      Layout{2, 32, 18},    Layout{3, 32, 20},
        Layout{6, 32, 22},    Layout{7, 32, 24},    Layout{8, 32, 34},    Layout{10, 256, 84},
        Layout{11, 256, 110}, Layout{12, 256, 144}, Layout{13, 256, 176}, Layout{14, 256, 210}};
    for (const Layout &layout : layouts) {
        if (layout.type == type && elements % layout.blockElements == 0)
            return elements / layout.blockElements * layout.blockBytes;
    }
    return {};
}

bool skipHeader(Reader &reader)
{
    // Vocabulary, then sizes of the audio and of the text half, then the mel bands.
    for (int field = 0; field < 10; ++field) {
        const auto value = reader.number();
        if (!value || *value == 0 || *value > headerLimit)
            return false;
    }
    const auto ftype = reader.number();
    return ftype && *ftype % quantizationVersionFactor < ftypeLimit;
}

bool skipFilters(Reader &reader)
{
    const auto bands = reader.number();
    const auto bins = reader.number();
    return bands && bins && reader.skip(uint64_t{*bands} * *bins * sizeof(float));
}

bool skipVocabulary(Reader &reader)
{
    const auto count = reader.number();
    if (!count)
        return false;
    for (uint32_t index = 0; index < *count; ++index) {
        const auto length = reader.number();
        if (!length || !reader.skip(*length))
            return false;
    }
    return true;
}

bool skipTensor(Reader &reader)
{
    const auto dimensions = reader.number();
    const auto nameLength = reader.number();
    const auto type = reader.number();
    if (!dimensions || !nameLength || !type || *dimensions > 4)
        return false;
    uint64_t elements = 1;
    for (uint32_t index = 0; index < *dimensions; ++index) {
        const auto extent = reader.number();
        if (!extent || *extent == 0 || *extent > headerLimit)
            return false;
        elements *= *extent;
        if (elements > (uint64_t{1} << 40))
            return false;
    }
    const auto bytes = byteCount(*type, elements);
    return bytes && reader.skip(*nameLength) && reader.skip(*bytes);
}

bool isWhole(Reader &reader)
{
    if (!skipHeader(reader) || !skipFilters(reader) || !skipVocabulary(reader))
        return false;
    // The library knows how many tensors there must be, but takes none at all for a test model.
    do {
        if (!skipTensor(reader))
            return false;
    } while (!reader.atEnd());
    return true;
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
