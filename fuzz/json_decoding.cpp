// Any bytes through the decoding helpers in each strictness: no crash, and no exception escapes.
#include "bridge/LocalRequest.h"
#include "foundation/Json.h"
#include "foundation/Time.h"

#include <cstdint>
#include <cstdlib>

namespace {

using namespace orvan;

struct Row {
    std::string id;
    std::optional<std::string> name;
    std::optional<std::int64_t> count;
    static std::optional<Row> decode(const Json& j) {
        Row r;
        Fields f(j);
        f.required("id", r.id).loose("name", r.name).loose("count", r.count);
        return f.result(std::move(r));
    }
};

struct Record {
    std::optional<std::string> name;
    std::optional<bool> on;
    std::optional<double> level;
    std::optional<std::vector<Row>> strictRows;
    std::optional<Lossy<Row>> rows;
    std::optional<std::map<std::string, std::string>> labels;
    static std::optional<Record> decode(const Json& j) {
        Record r;
        Fields f(j);
        f.optional("name", r.name).optional("on", r.on).optional("level", r.level);
        f.loose("strictRows", r.strictRows).optional("rows", r.rows).loose("labels", r.labels);
        return f.result(std::move(r));
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view bytes(reinterpret_cast<const char*>(data), size);
    try {
        auto record = decodeJson<Record>(bytes);
        auto tree = json::parse(bytes);
        // A record that decodes came from an object, and a lossy list never grows.
        if (record && (!tree || !tree->is_object())) std::abort();
        if (auto lossy = decodeJson<Lossy<Row>>(bytes)) {
            if (!tree || !tree->is_array() || lossy->items.size() > tree->size()) std::abort();
            // What a strict list accepts, the lossy one keeps whole.
            if (auto strict = decodeJson<std::vector<Row>>(bytes); strict && strict->size() != lossy->items.size())
                std::abort();
        }
        (void)decodeJson<std::vector<std::int64_t>>(bytes);
        (void)LocalRequest::message(bytes);
        (void)AccountWords::date(bytes);
        if (tree) (void)json::dump(*tree);
    } catch (...) {
        std::abort(); // decoding must never throw to its caller
    }
    return 0;
}
