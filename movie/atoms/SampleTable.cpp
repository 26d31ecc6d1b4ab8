#include "movie/atoms/SampleTable.h"

#include <algorithm>
#include <numeric>

namespace movie {

void appendRun(std::vector<TimeRun>& runs, const TimeRun& run) {
  const bool goesOn = !runs.empty() && !run.decodeStart && runs.back().duration == run.duration &&
                      runs.back().compositionOffset == run.compositionOffset;
  if (goesOn)
    runs.back().count += run.count;
  else
    runs.push_back(run);
}

void appendRange(std::vector<SampleRange>& ranges, const SampleRange& range) {
  const bool goesOn = !ranges.empty() && range.first >= ranges.back().first && range.first <= ranges.back().end();
  if (goesOn)
    ranges.back().count = std::max(ranges.back().end(), range.end()) - ranges.back().first;
  else
    ranges.push_back(range);
}

SampleTable::SampleTable(const std::vector<TimeRun>& runs, std::optional<std::vector<SampleRange>> syncSamples)
    : sync_(std::move(syncSamples)) {
  std::int64_t decodeTime = 0;
  for (const TimeRun& run : runs) {
    if (!append(run, decodeTime)) break;
  }
  orderByPresentation();
  normaliseSync();
}

/// False when not all of the run could be taken.
bool SampleTable::append(const TimeRun& run, std::int64_t& decodeTime) {
  const std::int64_t start = run.decodeStart.value_or(decodeTime);
  if (run.count == 0) return true;
  if (start < 0 || start >= maximumTime) return false;
  std::uint64_t count = run.count;
  if (run.duration != 0) count = std::min(count, static_cast<std::uint64_t>(maximumTime - start) / run.duration);
  if (count == 0) return false;
  const bool goesOn = !runs_.empty() && start == decodeTime && runs_.back().duration == run.duration &&
                      runs_.back().offset == run.compositionOffset;
  if (!goesOn) runs_.push_back({count_, start, run.duration, run.compositionOffset});
  count_ += count;
  decodeTime = start + static_cast<std::int64_t>(count * run.duration);
  duration_ = std::max(duration_, decodeTime);
  return count == run.count;
}

void SampleTable::orderByPresentation() {
  order_.resize(runs_.size());
  std::iota(order_.begin(), order_.end(), std::uint32_t{0});
  const auto isEarlier = [this](std::uint32_t left, std::uint32_t right) {
    return runs_[left].firstPresented() < runs_[right].firstPresented();
  };
  if (!std::is_sorted(order_.begin(), order_.end(), isEarlier)) {
    std::stable_sort(order_.begin(), order_.end(), isEarlier);
  }
  latest_.reserve(order_.size());
  for (const std::uint32_t run : order_) {
    const std::int64_t last = lastPresented(run);
    latest_.push_back(latest_.empty() ? last : std::max(latest_.back(), last));
  }
}

void SampleTable::normaliseSync() {
  if (!sync_) return;
  const auto byFirst = [](const SampleRange& left, const SampleRange& right) { return left.first < right.first; };
  if (!std::is_sorted(sync_->begin(), sync_->end(), byFirst)) std::sort(sync_->begin(), sync_->end(), byFirst);
  std::vector<SampleRange> apart;
  for (const SampleRange& range : *sync_) {
    if (range.first >= count_) break;
    if (range.count == 0) continue;
    appendRange(apart, {range.first, std::min(range.count, count_ - range.first)});
  }
  sync_ = std::move(apart);
}

std::size_t SampleTable::runOf(std::uint64_t index) const {
  const auto after = std::upper_bound(runs_.begin(), runs_.end(), index,
                                      [](std::uint64_t value, const Run& run) { return value < run.firstSample; });
  return static_cast<std::size_t>(after - runs_.begin()) - 1;
}

std::uint64_t SampleTable::samplesIn(std::size_t run) const {
  const std::uint64_t end = run + 1 < runs_.size() ? runs_[run + 1].firstSample : count_;
  return end - runs_[run].firstSample;
}

std::int64_t SampleTable::lastPresented(std::size_t run) const {
  return runs_[run].firstPresented() + static_cast<std::int64_t>((samplesIn(run) - 1) * runs_[run].duration);
}

std::optional<PresentedSample> SampleTable::presentedAt(std::int64_t mediaTime) const {
  if (runs_.empty()) return std::nullopt;
  // Every presentation lies below 2 * maximumTime; differences of such times do not overflow.
  const std::int64_t time = std::clamp(mediaTime, runs_[order_[0]].firstPresented(), 2 * maximumTime);

  // The first run that begins after the time; its first sample is a candidate for the next one on screen.
  const auto after =
      std::upper_bound(order_.begin(), order_.end(), time,
                       [this](std::int64_t value, std::uint32_t run) { return value < runs_[run].firstPresented(); });
  std::optional<std::int64_t> next;
  if (after != order_.end()) next = runs_[*after].firstPresented();

  std::optional<PresentedSample> best;
  for (auto place = static_cast<std::size_t>(after - order_.begin()); place-- > 0;) {
    const std::size_t number = order_[place];
    const Run& run = runs_[number];
    const std::uint64_t last = samplesIn(number) - 1;
    const auto elapsed = static_cast<std::uint64_t>(time - run.firstPresented());
    const std::uint64_t step = run.duration == 0 ? last : std::min(last, elapsed / run.duration);
    const auto into = static_cast<std::int64_t>(step * run.duration);
    const PresentedSample sample{run.firstSample + step, run.start + into, run.firstPresented() + into, run.duration};
    const bool later = !best || sample.presentationTime > best->presentationTime ||
                       (sample.presentationTime == best->presentationTime && sample.index > best->index);
    if (later) best = sample;
    if (step < last) next = std::min(next.value_or(2 * maximumTime), sample.presentationTime + run.duration);
    if (place > 0 && latest_[place - 1] < best->presentationTime) break;
  }
  if (next) best->duration = *next - best->presentationTime;
  return best;
}

std::int64_t SampleTable::decodeTimeOf(std::uint64_t index) const {
  if (runs_.empty()) return 0;
  const std::uint64_t sample = std::min(index, count_ - 1);
  const Run& run = runs_[runOf(sample)];
  return run.start + static_cast<std::int64_t>((sample - run.firstSample) * run.duration);
}

std::int64_t SampleTable::presentationTimeOf(std::uint64_t index) const {
  if (runs_.empty()) return 0;
  return decodeTimeOf(index) + runs_[runOf(std::min(index, count_ - 1))].offset;
}

std::uint64_t SampleTable::syncSampleAtOrBefore(std::uint64_t index) const {
  if (count_ == 0) return 0;
  const std::uint64_t sample = std::min(index, count_ - 1);
  if (!sync_) return sample;
  const auto after =
      std::upper_bound(sync_->begin(), sync_->end(), sample,
                       [](std::uint64_t value, const SampleRange& range) { return value < range.first; });
  if (after == sync_->begin()) return 0;
  return std::min(sample, (after - 1)->end() - 1);
}

}  // namespace movie
