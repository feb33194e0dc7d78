// Vantorel. MIT licence, see LICENSE.
// The numbered record of the fake platform.
#include "tests/unit/fake/record.h"

#include <algorithm>
#include <utility>

namespace vantorel::fake {

Record::Record() : mainThread_(std::this_thread::get_id()) {}

void Record::add(std::string line) {
    const std::lock_guard lock(mutex_);
    lines_.push_back(std::move(line));
}

void Record::addOnMain(std::string line) {
    checkMainThread(line);
    add(std::move(line));
}

void Record::checkMainThread(const std::string& call) {
    if (!onMainThread())
        addViolation("off the main thread: " + call);
}

void Record::addViolation(std::string what) {
    const std::lock_guard lock(mutex_);
    violations_.push_back(std::move(what));
}

std::vector<std::string> Record::lines() const {
    const std::lock_guard lock(mutex_);
    return lines_;
}

std::size_t Record::count(std::string_view line) const {
    const std::lock_guard lock(mutex_);
    return static_cast<std::size_t>(std::count(lines_.begin(), lines_.end(), line));
}

std::size_t Record::countStartingWith(std::string_view start) const {
    const std::lock_guard lock(mutex_);
    return static_cast<std::size_t>(std::count_if(
        lines_.begin(), lines_.end(), [start](const std::string& line) { return line.starts_with(start); }));
}

std::size_t Record::numberOf(std::string_view line) const {
    const std::lock_guard lock(mutex_);
    const auto found = std::find(lines_.begin(), lines_.end(), line);
    return found == lines_.end() ? 0 : static_cast<std::size_t>(found - lines_.begin()) + 1;
}

std::vector<std::string> Record::violations() const {
    const std::lock_guard lock(mutex_);
    return violations_;
}

void Record::clear() {
    const std::lock_guard lock(mutex_);
    lines_.clear();
}

void onBackgroundThread(const std::function<void()>& work) { std::thread(work).join(); }

} // namespace vantorel::fake
