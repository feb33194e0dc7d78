// Vantorel. MIT licence, see LICENSE.
// Files in memory, the bundle, the process's own environment and the defaults store of the fake.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <variant>

#include "platform/foundation.h"
#include "tests/unit/fake/record.h"

namespace vantorel::fake {

class FakeFileManager final : public FileManager {
public:
    explicit FakeFileManager(Record& record) : record_(record) {}

    bool fileExists(const std::string& path) const override;
    std::optional<PlatformError> setPosixPermissions(const std::string& path, unsigned mode) override;
    std::optional<std::string> readUtf8File(const std::string& path) const override;

    void addFile(const std::string& path, const std::string& bytes, unsigned mode = 0644);
    void addDirectory(const std::string& path);
    /// A symbolic link to `target`, which need not exist.
    void addLink(const std::string& path, const std::string& target);
    void remove(const std::string& path) { nodes_.erase(path); }
    /// Every later reading of `path` fails.
    void makeUnreadable(const std::string& path) { nodes_.at(path).readable = false; }
    /// As fileExists, without a record.
    bool exists(const std::string& path) const { return resolve(path) != nullptr; }
    bool isExecutable(const std::string& path) const;
    /// A script or a program of this machine, by its first bytes.
    bool isProgram(const std::string& path) const;
    bool isDirectory(const std::string& path) const;
    /// The permission bits of what is at `path`; throws where there is nothing.
    unsigned mode(const std::string& path) const { return nodes_.at(path).mode; }

    /// Every change of permissions fails with this error, where set.
    std::optional<PlatformError> permissionError;
    /// Called before each test for existence, where set.
    std::function<void(const std::string& path)> onExistenceTest;

private:
    struct Node {
        std::string bytes;
        unsigned mode = 0644;
        bool isDirectory = false;
        bool readable = true;
        std::optional<std::string> linkTarget;
    };
    const Node* resolve(const std::string& path) const;

    Record& record_;
    std::map<std::string, Node> nodes_;
};

class FakeBundle final : public Bundle {
public:
    std::string bundlePath() const override { return path; }
    std::string path = "/Applications/Vantorel.app";
};

class FakeProcessInfo final : public ProcessInfo {
public:
    explicit FakeProcessInfo(Record& record) : record_(record) {}

    Environment environment() const override;
    Environment variables;

private:
    Record& record_;
};

/// A store that keeps its values by type, as the home platform's does.
class FakeUserDefaults final : public UserDefaults {
public:
    using Value = std::variant<bool, std::int64_t, double, std::string>;

    explicit FakeUserDefaults(Record& record) : record_(record) {}

    bool hasObject(const std::string& key) const override;
    bool boolForKey(const std::string& key) const override;
    std::optional<std::string> stringForKey(const std::string& key) const override;
    void setBool(bool value, const std::string& key) override;
    void setString(const std::string& value, const std::string& key) override;

    /// What the store holds, for tests to fill and to read.
    std::map<std::string, Value> values;

private:
    Record& record_;
};

} // namespace vantorel::fake
