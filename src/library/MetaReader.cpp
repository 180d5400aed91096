#include "library/MetaReader.h"

#include "library/MetaCoding.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>

namespace kelvaro {

MetaReader::Remembered MetaReader::remembered(const FolderListing& listing) {
    Remembered known;
    if (!cache_) return known;
    const std::vector<CachedRecord> records = cache_->load(listing.folder());
    std::vector<SharedMeta> metas(listing.size());
    std::size_t next = 0; // records mostly come in the listing's own order
    for (const CachedRecord& record : records) {
        const bool isNext =
            next < listing.size() && fileNameOf(listing.photos()[next].url) == record.name;
        const auto at = isNext ? std::optional(next) : listing.find(record.name);
        auto meta = decodedMeta(record.record, record.size, record.modified, calendar_);
        if (at) next = *at + 1;
        if (!meta || (at && !isValid(*meta, listing.photos()[*at]))) continue;
        auto shared = std::make_shared<const PhotoMeta>(std::move(*meta));
        if (at)
            metas[*at] = std::move(shared);
        else
            known.gone.emplace_back(photoUrl(listing.folder(), record.name), std::move(shared));
    }
    for (std::size_t i = 0; i < metas.size(); ++i) {
        if (metas[i]) known.photos.emplace_back(listing.photos()[i].url, std::move(metas[i]));
    }
    return known;
}

void MetaReader::forget(const FolderUrl& folder, std::span<const std::string> fileNames) {
    if (cache_) cache_->remove(folder, fileNames);
}

std::string MetaReader::mountPointOf(const FolderUrl& folder) {
    return cache_ ? cache_->note(folder) : std::string();
}

void MetaReader::rememberMountPoint(const FolderUrl& folder, const std::string& mountPoint) {
    if (cache_ && cache_->note(folder) != mountPoint) cache_->setNote(folder, mountPoint);
}

SharedMeta MetaReader::readOne(const Photo& photo) {
    const auto properties = properties_.read(photo.url);
    if (!properties) return nullptr;
    return std::make_shared<const PhotoMeta>(makePhotoMeta(*properties, photo, calendar_));
}

void MetaReader::remember(const FolderUrl& folder, const PhotoMetas& batch) {
    if (!cache_) return;
    std::vector<CachedRecord> records;
    for (const auto& [url, meta] : batch) {
        if (meta)
            records.push_back(
                {std::string(fileNameOf(url)), meta->size, meta->mtime, encodedMeta(*meta)});
    }
    cache_->store(folder, records);
}

void MetaReader::read(const FolderUrl& folder, std::span<const Photo> photos, const Plan& plan,
                      const Cancellation& cancellation,
                      const std::function<void(const PhotoMetas&)>& onBatch) {
    std::atomic<std::size_t> next{0};
    std::mutex delivery; // one call of onBatch at a time
    const auto work = [&] {
        while (!cancellation.isCancelled()) {
            const std::size_t begin = next.fetch_add(plan.batch);
            if (begin >= photos.size()) return;
            PhotoMetas batch;
            for (const Photo& photo :
                 photos.subspan(begin).first(std::min(plan.batch, photos.size() - begin))) {
                if (cancellation.isCancelled()) break;
                batch.emplace_back(photo.url, readOne(photo));
            }
            const std::lock_guard guard(delivery);
            remember(folder, batch);
            onBatch(batch);
        }
    };
    const auto batches = (photos.size() + plan.batch - 1) / plan.batch;
    const auto helpers = std::min<std::size_t>(static_cast<std::size_t>(plan.threads), batches);
    std::vector<std::thread> threads;
    for (std::size_t i = 1; i < helpers; ++i)
        threads.emplace_back(work);
    work();
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace kelvaro
