#include "render/ThumbnailLoader.h"

#include "base/Require.h"
#include "develop/PhotoOpening.h"
#include "platform/PhotoKinds.h"
#include "recipe/RecipeCoding.h"

#include <algorithm>
#include <map>
#include <utility>

namespace kelvaro {

namespace {

// Changes whenever a thumbnail would come out differently.
constexpr std::string_view kThumbnailVersion = "2";
// Of the photos to develop: their headers are not read only to be exact.
constexpr std::int64_t kUsualPixels = 24'000'000;

// Whether it will be the same next time: what the file holds is at fault, not the moment.
bool isLasting(const ThumbnailResult& result) {
    if (result) return true;
    const FailureKind kind = result.error().kind;
    return kind == FailureKind::malformed || kind == FailureKind::unsupported ||
           kind == FailureKind::tooLarge;
}

} // namespace

// One picture on its way, for all who wish for it.
struct ThumbnailLoader::Job {
    struct Wish {
        ThumbnailPriority priority;
        Callback callback;
    };
    ThumbnailKey key;
    double when = 0;                      // it was asked for
    std::map<std::uint64_t, Wish> wishes; // main thread
    Cancellation cancellation;
    std::shared_ptr<RenderWork::Priority> admission = std::make_shared<RenderWork::Priority>();
    std::string identity;     // of whoever works on the job
    std::string lastIdentity; // of a file that may be away
    // Guarded by the lock of the waiting jobs.
    std::uint64_t number = 0; // of the newest request
    ThumbnailPriority priority = ThumbnailPriority::nearby;
};

ThumbnailLoader::ThumbnailLoader(RenderEngine& engine, ThumbnailMaker& maker,
                                 ThumbnailDiskCache& disk, FileSystem& files, Limits limits)
    : engine_(engine),
      maker_(maker),
      disk_(disk),
      files_(files),
      begin_(engine.clock().monotonicSeconds()),
      memory_(limits.memoryBytes),
      pressure_(engine.pressure().observe([this](MemoryPressure event) {
          if (event != MemoryPressure::normal) shed();
      })) {
    for (int i = 0; i < std::max(limits.workers, 1); ++i)
        quick_.push_back(
            std::make_unique<SerialQueue>("kelvaro.thumbnails", SerialQueue::AtEnd::drop));
}

ThumbnailLoader::~ThumbnailLoader() {
    for (const auto& [key, job] : jobs_)
        job->cancellation.cancel();
}

ThumbnailKey ThumbnailLoader::keyOf(ThumbnailRequest request) {
    const auto size =
        std::lower_bound(kThumbnailSizes.begin(), kThumbnailSizes.end(), request.sizePx);
    return {std::move(request.photo), std::move(request.edit),
            size == kThumbnailSizes.end() ? kThumbnailSizes.back() : *size};
}

ThumbnailLoader::Ticket ThumbnailLoader::request(ThumbnailRequest request,
                                                 ThumbnailPriority priority, Callback callback) {
    KELVARO_REQUIRE(engine_.mainThread().isCurrent() && callback);
    const std::string lastIdentity = std::move(request.lastIdentity);
    ThumbnailKey key = keyOf(std::move(request));
    JobPointer& job = jobs_[key];
    const bool isNew = !job;
    if (isNew) {
        job = std::make_shared<Job>();
        job->lastIdentity = lastIdentity;
        job->key = std::move(key);
        job->when = engine_.clock().monotonicSeconds();
    }
    job->wishes[++lastWish_] = {priority, std::move(callback)};
    waiting_.with([&](Waiting& waiting) {
        job->number = ++waiting.lastNumber;
        job->priority = std::max(job->priority, priority);
        if (isNew) waiting.quick.push_back(job);
    });
    if (isNew) quick_[nextQueue_++ % quick_.size()]->post([this] { runQuick(); });
    return {self_, job, lastWish_};
}

Thumbnail ThumbnailLoader::inMemory(const ThumbnailRequest& request) {
    const auto found = memory_.find(keyOf(request), {});
    return found && *found ? **found : nullptr;
}

ThumbnailLoader::Ticket& ThumbnailLoader::Ticket::operator=(Ticket&& other) noexcept {
    if (this != &other) {
        end();
        loader_ = std::move(other.loader_);
        job_ = std::move(other.job_);
        wish_ = other.wish_;
    }
    return *this;
}

void ThumbnailLoader::Ticket::setPriority(ThumbnailPriority priority) {
    const auto loader = loader_.lock();
    if (!loader || !job_) return;
    const auto wish = job_->wishes.find(wish_);
    if (wish == job_->wishes.end()) return;
    wish->second.priority = priority;
    (*loader)->reprioritise(*job_);
}

void ThumbnailLoader::Ticket::promote() {
    if (const auto loader = loader_.lock(); loader && job_) {
        setPriority(ThumbnailPriority::visible);
        (*loader)->engine_.work().promote(*job_->admission);
    }
}

void ThumbnailLoader::Ticket::end() {
    if (const auto loader = loader_.lock(); loader && job_) (*loader)->drop(job_, wish_);
    job_ = nullptr;
}

void ThumbnailLoader::reprioritise(Job& job) {
    auto highest = ThumbnailPriority::nearby;
    for (const auto& [number, wish] : job.wishes)
        highest = std::max(highest, wish.priority);
    waiting_.with([&](Waiting&) { job.priority = highest; });
}

// A job that nobody wishes for any more is not begun, and not finished where it has begun.
void ThumbnailLoader::drop(const JobPointer& job, std::uint64_t wish) {
    job->wishes.erase(wish);
    if (!job->wishes.empty()) return reprioritise(*job);
    const auto found = jobs_.find(job->key);
    if (found == jobs_.end() || found->second != job) return; // it has arrived
    job->cancellation.cancel();
    waiting_.with([&](Waiting& waiting) {
        std::erase(waiting.quick, job);
        std::erase(waiting.developing, job);
    });
    jobs_.erase(found);
}

// What is on screen first, and of that the newest request.
ThumbnailLoader::JobPointer ThumbnailLoader::next(std::vector<JobPointer> Waiting::*lane) {
    return waiting_.with([&](Waiting& waiting) -> JobPointer {
        auto& jobs = waiting.*lane;
        const auto best =
            std::max_element(jobs.begin(), jobs.end(), [](const auto& a, const auto& b) {
                return std::pair(a->priority, a->number) < std::pair(b->priority, b->number);
            });
        if (best == jobs.end()) return nullptr;
        JobPointer job = std::move(*best);
        *best = std::move(jobs.back());
        jobs.pop_back();
        return job;
    });
}

std::string ThumbnailLoader::diskKey(const Job& job) const {
    std::string key = job.key.photo.native();
    key.append("\n").append(job.identity).append("\n").append(std::to_string(job.key.sizePx));
    key.append("\n").append(kThumbnailVersion).append("\n");
    if (!isEdited(job.key.edit)) return key;
    const auto recipe = encodedText(job.key.edit);
    return recipe ? key + *recipe : std::string(); // empty: not to be kept
}

// One waiting job, not the one that was posted with this call, but the one wanted most.
void ThumbnailLoader::runQuick() {
    const JobPointer job = next(&Waiting::quick);
    if (!job) return; // dropped
    auto identity = photoIdentity(files_, job->key.photo);
    const bool isAway = !identity;
    if (isAway && job->lastIdentity.empty())
        return finish(job, fail(std::move(identity).error()), "failed");
    job->identity = isAway ? job->lastIdentity : std::move(*identity);
    if (const auto found = memory_.find(job->key, job->identity))
        return finish(job, *found, "memory");
    const std::string key = diskKey(*job);
    if (auto found = key.empty() ? std::nullopt : disk_.find(key))
        return finish(job, std::make_shared<const Bitmap>(std::move(*found)), "disk");
    if (isAway) {
        job->identity.clear(); // nothing is to be remembered of this
        return finish(job, fail(std::move(identity).error()), "failed");
    }

    if (!ThumbnailMaker::isAsShot(job->key.edit)) return develop(job);
    // Whoever moves a slider meanwhile has the machine to himself.
    if (!engine_.work().waitForQuiet(&job->cancellation, job->admission.get())) return;
    auto made = maker_.quick(job->key.photo, job->key.edit, job->key.sizePx, &job->cancellation);
    if (made && *made)
        return finish(job, std::make_shared<const Bitmap>(std::move(**made)), "preview");
    const bool isRaw = photoKind(job->key.photo) == PhotoKind::raw;
    if (!made && (!isRaw || made.error().kind == FailureKind::cancelled))
        return finish(job, fail(std::move(made).error()), "failed");
    develop(job);
}

void ThumbnailLoader::develop(const JobPointer& job) {
    waiting_.with([&](Waiting& waiting) {
        if (!job->cancellation.isCancelled()) waiting.developing.push_back(job);
    });
    developing_.post([this] { runDeveloping(); });
}

void ThumbnailLoader::runDeveloping() {
    const JobPointer job = next(&Waiting::developing);
    if (!job) return;
    const ThumbnailKey& key = job->key;
    auto admission = engine_.work().waitForAdmission(renderEstimateBytes(kUsualPixels),
                                                     &job->cancellation, job->admission);
    if (!admission) return;
    auto made = maker_.developed(key.photo, key.edit, key.sizePx, &job->cancellation);
    admission.reset(); // before anybody hears of the picture
    if (!made) return finish(job, fail(std::move(made).error()), "failed");
    finish(job, std::make_shared<const Bitmap>(std::move(*made)), "developed");
}

void ThumbnailLoader::finish(const JobPointer& job, ThumbnailResult result, const char* origin) {
    if (!result && result.error().kind == FailureKind::cancelled) return;
    const std::string_view from = origin;
    if (!job->identity.empty() && from != "memory" && isLasting(result))
        memory_.keep(job->key, job->identity, result);
    if (from == "preview" || from == "developed")
        if (const std::string key = diskKey(*job); !key.empty()) disk_.keep(key, *result);
    const double now = engine_.clock().monotonicSeconds();
    const int size = result ? std::max((*result)->size.width, (*result)->size.height) : 0;
    engine_.perf().thumbnail(now - begin_, job->key.photo.filename().string(),
                             waiting_.with([&](Waiting&) { return job->number; }), origin,
                             (now - job->when) * 1000, size);
    engine_.mainThread().post([self = std::weak_ptr(self_), job, result = std::move(result)] {
        if (const auto loader = self.lock()) (*loader)->arrived(job, result);
    });
}

void ThumbnailLoader::arrived(const JobPointer& job, const ThumbnailResult& result) {
    const auto found = jobs_.find(job->key);
    if (found == jobs_.end() || found->second != job) return; // dropped meanwhile
    jobs_.erase(found);
    // A callback may end other tickets of the same job.
    while (!job->wishes.empty()) {
        const auto callback = std::move(job->wishes.begin()->second.callback);
        job->wishes.erase(job->wishes.begin());
        callback(result);
    }
}

} // namespace kelvaro
