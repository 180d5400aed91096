#include "library/RowOrder.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace kelvaro {

namespace {

// A name with the first bytes of its sort key at hand, which settle most comparisons.
struct NamedRow {
    std::array<std::uint64_t, 2> start{}; // big-endian
    std::string_view key;
    std::string_view url;
    Row row = 0;
};

std::uint64_t bigEndian(std::string_view bytes) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < 8; ++i)
        value = value << 8 | (i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0u);
    return value;
}

NamedRow namedRow(Row row, const RowOrder::Name& name) {
    NamedRow named;
    named.key = name.listing->sortKey(name.index);
    named.url = name.listing->photos()[name.index].url;
    named.start = {bigEndian(named.key), named.key.size() > 8 ? bigEndian(named.key.substr(8)) : 0};
    named.row = row;
    return named;
}

bool isBefore(const NamedRow& a, const NamedRow& b) {
    if (a.start != b.start) return a.start < b.start;
    if (const int order = a.key.compare(b.key)) return order < 0;
    if (const int order = extensionOf(a.url).compare(extensionOf(b.url))) return order < 0;
    return a.url < b.url;
}

} // namespace

void RowOrder::renamed(Row row) {
    if (row >= isRenamed_.size()) isRenamed_.resize(row + 1);
    if (!isRenamed_[row]) renamed_.push_back(row);
    isRenamed_[row] = true;
    key_.reset();
}

const std::vector<Row>& RowOrder::byName(const std::function<Name(Row)>& nameOf) {
    if (renamed_.empty()) return byName_;
    std::vector<NamedRow> added, kept, all;
    for (const Row row : renamed_) {
        if (const Name name = nameOf(row); name.listing) added.push_back(namedRow(row, name));
    }
    std::sort(added.begin(), added.end(), isBefore);
    kept.reserve(byName_.size());
    for (const Row row : byName_) {
        if (isRenamed_[row]) continue;
        kept.push_back(namedRow(row, nameOf(row)));
    }
    all.resize(kept.size() + added.size());
    std::merge(kept.begin(), kept.end(), added.begin(), added.end(), all.begin(), isBefore);
    byName_.clear();
    for (const NamedRow& named : all)
        byName_.push_back(named.row);
    for (const Row row : renamed_)
        isRenamed_[row] = false;
    renamed_.clear();
    return byName_;
}

void RowOrder::sortByValue(SortKey key, const std::function<std::int64_t(Row, SortKey)>& valueOf) {
    byValue_.clear();
    byValue_.reserve(byName_.size());
    for (const Row row : byName_)
        byValue_.push_back({valueOf(row, key), static_cast<std::uint32_t>(byValue_.size()), row});
    std::sort(byValue_.begin(), byValue_.end(), [](const Entry& a, const Entry& b) {
        return a.value != b.value ? a.value < b.value : a.rank < b.rank;
    });
    key_ = key;
}

std::vector<Row> RowOrder::sorted(const SortOrder& order, const std::function<Name(Row)>& nameOf,
                                  const std::function<std::int64_t(Row, SortKey)>& valueOf) {
    std::vector<Row> rows = byName(nameOf);
    if (order.key == SortKey::name) {
        if (!order.ascending) std::reverse(rows.begin(), rows.end());
        return rows;
    }
    if (key_ != order.key) sortByValue(order.key, valueOf);
    const auto rowOf = [](const Entry& entry) { return entry.row; };
    if (order.ascending) {
        std::transform(byValue_.begin(), byValue_.end(), rows.begin(), rowOf);
        return rows;
    }
    auto out = rows.begin();
    for (auto end = byValue_.end(); end != byValue_.begin();) {
        auto begin = end - 1; // of the entries with the same value
        while (begin != byValue_.begin() && (begin - 1)->value == begin->value)
            --begin;
        out = std::transform(begin, end, out, rowOf);
        end = begin;
    }
    return rows;
}

} // namespace kelvaro
