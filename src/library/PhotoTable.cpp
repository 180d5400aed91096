#include "library/PhotoTable.h"

#include <algorithm>
#include <unordered_set>

namespace kelvaro {

PhotoTable::PhotoTable(const TextRules& rules, const LocalCalendar& calendar)
    : rules_(rules),
      calendar_(calendar),
      vocabulary_(rules, calendar),
      dayGroups_(rules, calendar) {}

Row PhotoTable::takeRow() {
    if (freeRows_.empty()) {
        rows_.emplace_back();
        return static_cast<Row>(rows_.size() - 1);
    }
    const Row row = freeRows_.back();
    freeRows_.pop_back();
    return row;
}

void PhotoTable::freeRow(Row row) {
    rows_[row] = {};
    freeRows_.push_back(row);
    order_.renamed(row);
}

void PhotoTable::describe(RowData& data) {
    data.taken = data.meta ? data.meta->taken.value_or(data.photo->modified) : data.photo->modified;
    data.words = vocabulary_.words(*data.photo, data.meta.get());
    data.camera = data.lens = data.focalLength = 0;
    if (!data.meta) return;
    if (data.meta->camera) data.camera = filterTexts_.number(*data.meta->camera);
    if (data.meta->lens) data.lens = filterTexts_.number(*data.meta->lens);
    data.focalLength = focalNumber(*data.meta);
}

std::uint32_t PhotoTable::focalNumber(const PhotoMeta& meta) {
    if (!meta.focalLength) return 0;
    const auto next = static_cast<std::uint32_t>(focalLengths_.size());
    const auto [at, isNew] = focalNumbers_.try_emplace(*meta.focalLength, next);
    if (isNew) focalLengths_.push_back(*meta.focalLength);
    return at->second;
}

void PhotoTable::setFolder(FolderPhotos photos, std::span<const SharedMeta> metas) {
    Folder& folder = folders_[photos->folder()];
    const FolderPhotos before = std::move(folder.photos);
    const std::vector<Row> oldRows = std::move(folder.rows);
    folder = {photos, {}};
    folder.rows.reserve(photos->size());
    std::size_t old = 0; // both listings are sorted by file name
    const auto dropUntil = [&](const PhotoUrl* url) {
        for (; old < oldRows.size() && (!url || before->photos()[old].url < *url); ++old)
            freeRow(oldRows[old]);
    };
    for (std::size_t i = 0; i < photos->size(); ++i) {
        const Photo& photo = photos->photos()[i];
        dropUntil(&photo.url);
        const bool isKnown = old < oldRows.size() && before->photos()[old].url == photo.url;
        const Row row = isKnown ? oldRows[old] : takeRow();
        RowData& data = rows_[row];
        const bool isSame = isKnown && before->photos()[old] == photo;
        data.photo = &photo;
        data.listing = photos.get();
        data.index = static_cast<std::uint32_t>(i);
        const bool hasNewMeta = !metas.empty() && metas[i] && isValid(*metas[i], photo);
        if (!isSame || hasNewMeta) {
            if (data.meta && !isValid(*data.meta, photo)) data.meta = nullptr;
            if (hasNewMeta) data.meta = metas[i];
            describe(data);
            order_.valuesChanged();
        }
        if (!isKnown) order_.renamed(row);
        old += isKnown;
        folder.rows.push_back(row);
    }
    dropUntil(nullptr);
}

void PhotoTable::removeFolder(std::string_view folder) {
    const auto found = folders_.find(std::string(folder));
    if (found == folders_.end()) return;
    for (const Row row : found->second.rows)
        freeRow(row);
    folders_.erase(found);
}

void PhotoTable::remove(std::span<const PhotoUrl> urls) {
    std::unordered_map<std::string, std::unordered_set<std::string_view>> gone;
    for (const PhotoUrl& url : urls)
        gone[std::string(folderOf(url))].insert(url);
    for (const auto& [name, urlsInFolder] : gone) {
        const FolderPhotos before = folder(name);
        if (!before) continue;
        std::vector<Photo> left;
        for (const Photo& photo : before->photos()) {
            if (!urlsInFolder.contains(photo.url)) left.push_back(photo);
        }
        setFolder(FolderListing::make(name, std::move(left), rules_, before));
    }
}

FolderPhotos PhotoTable::folder(std::string_view folder) const {
    const auto found = folders_.find(std::string(folder));
    return found == folders_.end() ? nullptr : found->second.photos;
}

std::optional<Row> PhotoTable::find(std::string_view url) const {
    const auto folder = folders_.find(std::string(folderOf(url)));
    if (folder == folders_.end()) return std::nullopt;
    const auto index = folder->second.photos->find(fileNameOf(url));
    if (!index) return std::nullopt;
    return folder->second.rows[*index];
}

const PhotoTable::RowData* PhotoTable::data(std::string_view url) const {
    const auto row = find(url);
    return row ? &rows_[*row] : nullptr;
}

void PhotoTable::setMeta(std::span<const std::pair<PhotoUrl, SharedMeta>> metas) {
    const Folder* folder = nullptr; // of the photo before
    std::size_t next = 0;           // and the place after it: metadata comes in that order
    for (const auto& [url, meta] : metas) {
        const bool isNext =
            folder && next < folder->rows.size() && folder->photos->photos()[next].url == url;
        if (!isNext) {
            const auto row = find(url);
            if (!row) continue;
            folder = &folders_.find(std::string(folderOf(url)))->second;
            next = rows_[*row].index;
        }
        setMeta(folder->rows[next++], meta);
    }
}

void PhotoTable::setMeta(std::string_view url, SharedMeta meta) {
    if (const auto row = find(url)) setMeta(*row, std::move(meta));
}

void PhotoTable::setMeta(Row row, SharedMeta meta) {
    RowData& data = rows_[row];
    if (meta && !isValid(*meta, *data.photo)) return;
    data.meta = std::move(meta);
    describe(data);
    order_.valuesChanged();
}

void PhotoTable::setEdit(std::string_view url, bool isEdited, std::optional<FileTime> editDate) {
    const auto row = find(url);
    if (!row) return;
    rows_[*row].isEdited = isEdited;
    rows_[*row].editDate = isEdited ? editDate : std::nullopt;
}

void PhotoTable::setFavorite(std::string_view url, bool isFavorite) {
    if (const auto row = find(url)) rows_[*row].isFavorite = isFavorite;
}

void PhotoTable::setMarks(const FolderUrl& folder, const FolderMarks& marks) {
    const auto found = folders_.find(folder);
    if (found == folders_.end()) return;
    const bool isBare = marks.editDates.empty() && marks.favorites.empty();
    for (const Row row : found->second.rows) {
        RowData& data = rows_[row];
        data.isEdited = data.isFavorite = false;
        data.editDate.reset();
        if (isBare) continue;
        const std::string name(fileNameOf(data.photo->url));
        const auto edit = marks.editDates.find(name);
        data.isEdited = edit != marks.editDates.end();
        if (data.isEdited) data.editDate = edit->second;
        data.isFavorite = marks.favorites.contains(name);
    }
}

const Photo* PhotoTable::photo(std::string_view url) const {
    const RowData* found = data(url);
    return found ? found->photo : nullptr;
}

SharedMeta PhotoTable::meta(std::string_view url) const {
    const RowData* found = data(url);
    return found ? found->meta : nullptr;
}

bool PhotoTable::isEdited(std::string_view url) const {
    const RowData* found = data(url);
    return found && found->isEdited;
}

bool PhotoTable::isFavorite(std::string_view url) const {
    const RowData* found = data(url);
    return found && found->isFavorite;
}

std::string PhotoTable::searchText(std::string_view url) const {
    const RowData* found = data(url);
    if (!found) return {};
    std::string text(found->listing->foldedName(found->index));
    for (const TextNumber number : found->words) {
        if (number != 0) text.append(" ").append(vocabulary_.text(number));
    }
    return text;
}

std::vector<KnownPhoto> PhotoTable::facts(const std::unordered_set<FolderUrl>& unavailable) const {
    std::vector<KnownPhoto> all;
    all.reserve(size());
    for (const auto& [name, folder] : folders_) {
        if (unavailable.contains(name)) continue;
        for (const Row row : folder.rows) {
            const RowData& data = rows_[row];
            all.push_back(
                {data.photo, data.meta.get(), data.isEdited, data.isFavorite, data.editDate});
        }
    }
    return all;
}

PhotoTable::Flags PhotoTable::inScope(const LibraryQuery& request) const {
    Flags flags(rows_.size());
    const Scope& scope = request.scope;
    for (const auto& [name, folder] : folders_) {
        if (request.unavailable.contains(name)) continue;
        if (scope.kind == Scope::Kind::folder && scope.folder != name) continue;
        for (const Row row : folder.rows) {
            const RowData& data = rows_[row];
            flags[row] = scope.kind == Scope::Kind::edited      ? data.isEdited
                         : scope.kind == Scope::Kind::favorites ? data.isFavorite
                                                                : true;
            if (request.only && flags[row])
                flags[row] = request.only->holds(*data.photo, data.meta.get());
        }
    }
    return flags;
}

void PhotoTable::applyFilter(const PhotoFilter& filter, Flags& flags) const {
    if (!filter.isActive()) return;
    // What is selected, by the numbers of the texts; the empty text is never selected.
    const auto selected = [&](const std::set<std::string>& texts) {
        Flags numbers(filterTexts_.size());
        for (TextNumber i = 1; i < numbers.size(); ++i)
            numbers[i] = texts.contains(filterTexts_.text(i));
        return numbers;
    };
    const Flags cameras = selected(filter.cameras), lenses = selected(filter.lenses);
    Flags focalLengths(focalLengths_.size());
    for (std::size_t i = 1; i < focalLengths.size(); ++i)
        focalLengths[i] = filter.focalLengths.contains(focalLengths_[i]);
    for (Row row = 0; row < flags.size(); ++row) {
        if (!flags[row]) continue;
        const RowData& data = rows_[row];
        const PhotoKind kind = data.photo->isRaw ? PhotoKind::raw : PhotoKind::image;
        flags[row] = (filter.cameras.empty() || cameras[data.camera]) &&
                     (filter.lenses.empty() || lenses[data.lens]) &&
                     (filter.focalLengths.empty() || focalLengths[data.focalLength]) &&
                     (filter.formats.empty() || filter.formats.contains(kind));
    }
}

void PhotoTable::applySearch(const std::string& searchText, Flags& flags) const {
    const SearchQuery query(searchText, rules_);
    for (const std::string& token : query.tokens()) {
        const Flags words = vocabulary_.contains(token);
        const bool isEdited = SearchQuery::namesEdited(token);
        const bool isFavorite = SearchQuery::namesFavorite(token);
        for (Row row = 0; row < flags.size(); ++row) {
            if (!flags[row]) continue;
            const RowData& data = rows_[row];
            flags[row] =
                std::any_of(data.words.begin(), data.words.end(),
                            [&](TextNumber number) { return words[number]; }) ||
                data.listing->foldedName(data.index).find(token) != std::string_view::npos ||
                (isEdited && data.isEdited) || (isFavorite && data.isFavorite);
        }
    }
}

std::optional<FileTime> PhotoTable::sortDate(const RowData& data, SortKey key) {
    switch (key) {
    case SortKey::dateTaken:
        return data.taken;
    case SortKey::modified:
        return data.photo->modified;
    case SortKey::created:
        return data.photo->created;
    default:
        return std::nullopt;
    }
}

std::int64_t PhotoTable::orderKey(const RowData& data, SortKey key) {
    if (key == SortKey::size) return data.photo->fileSize;
    return sortDate(data, key).value_or(FileTime()).nanoseconds;
}

std::vector<Row> PhotoTable::ordered(const SortOrder& order) {
    return order_.sorted(
        order,
        [this](Row row) {
            return RowOrder::Name{rows_[row].listing, rows_[row].index};
        },
        [this](Row row, SortKey key) { return orderKey(rows_[row], key); });
}

// The days in the direction of the order, photos without an edit date last; within a day the order
// stays.
void PhotoTable::orderByEditDay(std::vector<Row>& rows, const LibraryQuery& request) const {
    std::vector<std::pair<std::int64_t, Row>> days;
    days.reserve(rows.size());
    constexpr std::int64_t unknown = std::numeric_limits<std::int64_t>::max();
    for (const Row row : rows) {
        const auto& date = rows_[row].editDate;
        if (!date) {
            days.emplace_back(unknown, row);
            continue;
        }
        const std::int64_t day = dayNumber(calendar_.civil(*date));
        days.emplace_back(request.order.ascending ? day : -day, row);
    }
    std::stable_sort(days.begin(), days.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::transform(days.begin(), days.end(), rows.begin(),
                   [](const auto& day) { return day.second; });
}

std::vector<PhotoGroup> PhotoTable::groups(const std::vector<Row>& rows,
                                           const LibraryQuery& request) {
    std::vector<PhotoGroup> groups;
    const bool byEdit = request.scope.kind == Scope::Kind::edited;
    std::optional<DayGroups::Period> period;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const RowData& data = rows_[rows[i]];
        const auto date = byEdit ? data.editDate : sortDate(data, request.order.key);
        if (!date && !byEdit) return {};
        if (!date) { // these stand last
            groups.push_back({i, std::string(texts::editDateUnknown)});
            return groups;
        }
        if (period && period->contains(*date)) continue;
        period = dayGroups_.periodOf(*date, request.monthGroups);
        groups.push_back({i, dayGroups_.heading(*period, request.monthGroups, request.now)});
    }
    return groups;
}

// With the listings that own them.
void PhotoTable::addPhotos(LibraryView& view, const std::vector<Row>& rows) const {
    view.photos.reserve(rows.size());
    std::unordered_set<const FolderListing*> used;
    const FolderListing* last = nullptr;
    for (const Row row : rows) {
        const RowData& data = rows_[row];
        view.photos.push_back(data.photo);
        if (data.listing == last) continue;
        last = data.listing;
        if (used.insert(last).second) view.folders.push_back(last->shared_from_this());
    }
}

LibraryView PhotoTable::query(const LibraryQuery& request) {
    Flags flags = inScope(request);
    applyFilter(request.filter, flags);
    applySearch(request.searchText, flags);
    std::vector<Row> rows = ordered(request.order);
    std::erase_if(rows, [&](Row row) { return !flags[row]; });
    if (request.scope.kind == Scope::Kind::edited) orderByEditDay(rows, request);
    LibraryView view;
    view.groups = groups(rows, request);
    addPhotos(view, rows);
    return view;
}

FilterOptions PhotoTable::filterOptions(const LibraryQuery& request) const {
    const Flags flags = inScope(request);
    Flags cameras(filterTexts_.size()), lenses(filterTexts_.size());
    Flags focalLengths(focalLengths_.size());
    bool hasRaw = false, hasImage = false;
    for (Row row = 0; row < flags.size(); ++row) {
        if (!flags[row]) continue;
        const RowData& data = rows_[row];
        cameras[data.camera] = lenses[data.lens] = focalLengths[data.focalLength] = true;
        (data.photo->isRaw ? hasRaw : hasImage) = true;
    }
    const auto named = [&](const Flags& numbers) {
        std::vector<std::pair<std::string, std::string>> keyed; // by sort key, then as they stand
        for (TextNumber i = 1; i < numbers.size(); ++i) {
            const std::string& text = filterTexts_.text(i);
            if (numbers[i]) keyed.emplace_back(rules_.sortKey(text), text);
        }
        std::sort(keyed.begin(), keyed.end());
        std::vector<std::string> names;
        for (auto& [key, text] : keyed)
            names.push_back(std::move(text));
        return names;
    };
    FilterOptions options{named(cameras), named(lenses), {}, {}};
    for (std::size_t i = 1; i < focalLengths.size(); ++i)
        if (focalLengths[i]) options.focalLengths.push_back(focalLengths_[i]);
    std::sort(options.focalLengths.begin(), options.focalLengths.end());
    if (hasRaw) options.formats.push_back(PhotoKind::raw);
    if (hasImage) options.formats.push_back(PhotoKind::image);
    return options;
}

} // namespace kelvaro
