// Vantorel. MIT licence, see LICENSE.
// Files in memory, environment and defaults store of the fake.
#include "tests/unit/fake/fake_files.h"

#include <algorithm>
#include <cctype>

#include "platform/portable/text.h"
#include "tests/unit/fake/describe.h"

namespace vantorel::fake {

bool FakeFileManager::fileExists(const std::string& path) const {
    record_.addOnMain("fileManager.fileExists(" + quoted(path) + ")");
    if (onExistenceTest)
        onExistenceTest(path);
    return exists(path);
}

std::optional<PlatformError> FakeFileManager::setPosixPermissions(const std::string& path, unsigned mode) {
    record_.addOnMain("fileManager.setPosixPermissions(" + quoted(path) + ", " + std::to_string(mode) + ")");
    if (permissionError)
        return permissionError;
    const auto found = nodes_.find(path);
    if (found == nodes_.end())
        return makeError("No such file.");
    found->second.mode = mode;
    return std::nullopt;
}

std::optional<std::string> FakeFileManager::readUtf8File(const std::string& path) const {
    record_.addOnMain("fileManager.readUtf8File(" + quoted(path) + ")");
    const Node* node = resolve(path);
    if (node == nullptr || node->isDirectory || !node->readable || !isValidUtf8(node->bytes))
        return std::nullopt;
    return node->bytes;
}

void FakeFileManager::addFile(const std::string& path, const std::string& bytes, unsigned mode) {
    nodes_[path] = {.bytes = bytes, .mode = mode, .isDirectory = false, .readable = true, .linkTarget = {}};
}

void FakeFileManager::addDirectory(const std::string& path) {
    nodes_[path] = {.bytes = {}, .mode = 0755, .isDirectory = true, .readable = true, .linkTarget = {}};
}

void FakeFileManager::addLink(const std::string& path, const std::string& target) {
    nodes_[path] = {.bytes = {}, .mode = 0777, .isDirectory = false, .readable = true, .linkTarget = target};
}

bool FakeFileManager::isExecutable(const std::string& path) const {
    const Node* node = resolve(path);
    return node != nullptr && !node->isDirectory && (node->mode & 0111) != 0;
}

bool FakeFileManager::isProgram(const std::string& path) const {
    const Node* node = resolve(path);
    return node != nullptr && (node->bytes.starts_with("#!") || node->bytes.starts_with("\x7F"
                                                                                        "ELF"));
}

bool FakeFileManager::isDirectory(const std::string& path) const {
    const Node* node = resolve(path);
    return node != nullptr && node->isDirectory;
}

const FakeFileManager::Node* FakeFileManager::resolve(const std::string& path) const {
    const auto found = nodes_.find(path);
    if (found == nodes_.end())
        return nullptr;
    return found->second.linkTarget ? resolve(*found->second.linkTarget) : &found->second;
}

Environment FakeProcessInfo::environment() const {
    record_.addOnMain("processInfo.environment()");
    return variables;
}

bool FakeUserDefaults::hasObject(const std::string& key) const {
    record_.addOnMain("userDefaults.hasObject(" + quoted(key) + ")");
    return values.contains(key);
}

namespace {

std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char character) { return static_cast<char>(std::tolower(character)); });
    return text;
}

bool truthy(const std::string& text) {
    const std::string word = lowered(text);
    return word == "yes" || word == "true" || word == "1";
}

} // namespace

bool FakeUserDefaults::boolForKey(const std::string& key) const {
    record_.addOnMain("userDefaults.boolForKey(" + quoted(key) + ")");
    const auto found = values.find(key);
    if (found == values.end())
        return false;
    const Value& value = found->second;
    if (const auto* boolean = std::get_if<bool>(&value))
        return *boolean;
    if (const auto* integer = std::get_if<std::int64_t>(&value))
        return *integer != 0;
    if (const auto* number = std::get_if<double>(&value))
        return *number != 0;
    return truthy(std::get<std::string>(value));
}

std::optional<std::string> FakeUserDefaults::stringForKey(const std::string& key) const {
    record_.addOnMain("userDefaults.stringForKey(" + quoted(key) + ")");
    const auto found = values.find(key);
    if (found == values.end())
        return std::nullopt;
    const Value& value = found->second;
    if (const auto* boolean = std::get_if<bool>(&value))
        return *boolean ? "1" : "0";
    if (const auto* integer = std::get_if<std::int64_t>(&value))
        return std::to_string(*integer);
    if (const auto* number = std::get_if<double>(&value))
        return shown(*number);
    return std::get<std::string>(value);
}

void FakeUserDefaults::setBool(bool value, const std::string& key) {
    record_.addOnMain("userDefaults.setBool(" + shown(value) + ", " + quoted(key) + ")");
    values[key] = value;
}

void FakeUserDefaults::setString(const std::string& value, const std::string& key) {
    record_.addOnMain("userDefaults.setString(" + quoted(value) + ", " + quoted(key) + ")");
    values[key] = value;
}

} // namespace vantorel::fake
