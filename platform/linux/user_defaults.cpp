// Vantorel. MIT licence, see LICENSE.
// The user's preferences in a key file.

#include "platform/linux/user_defaults.h"

#include <glib.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <map>
#include <system_error>
#include <utility>

#include "platform/linux/main_thread.h"
#include "platform/linux/object.h"
#include "platform/portable/text.h"

namespace vantorel::gtk {

namespace {

constexpr const char* kGroup = "defaults";
constexpr int kFileMode = 0600;
constexpr int kFolderMode = 0700;

struct KeyFileUnref {
    void operator()(GKeyFile* file) const { g_key_file_unref(file); }
};
using KeyFile = std::unique_ptr<GKeyFile, KeyFileUnref>;

enum class FileState {
    absent,
    whole,
    damaged,
};

struct Loaded {
    KeyFile file;
    FileState state;
};

Loaded load(const std::string& path) {
    KeyFile file(g_key_file_new());
    GError* failure = nullptr;
    if (!path.empty() &&
        g_key_file_load_from_file(file.get(), path.c_str(),
                                  static_cast<GKeyFileFlags>(G_KEY_FILE_KEEP_COMMENTS | G_KEY_FILE_KEEP_TRANSLATIONS),
                                  &failure)) {
        return {std::move(file), FileState::whole};
    }
    const GErrorPointer reason(failure);
    const bool isDamaged = reason && reason->domain == G_KEY_FILE_ERROR;
    return {KeyFile(g_key_file_new()), isDamaged ? FileState::damaged : FileState::absent};
}

// Another user's or a read-only file is left alone, although its folder would let it be replaced.
bool mayWrite(const std::string& path) {
    return !std::filesystem::exists(std::filesystem::symlink_status(path)) || ::access(path.c_str(), W_OK) == 0;
}

// A link, as keepers of settings lay them, goes on pointing at the file that is written.
std::string resolved(const std::string& path) {
    std::error_code failure;
    const std::filesystem::path target = std::filesystem::canonical(path, failure);
    return failure ? path : target.string();
}

// The store's reading of a text as a Boolean: of a number, whether it is not 0; else by the first letter that counts.
bool truth(const std::string& text) {
    const char* begin = text.c_str();
    char* end = nullptr;
    const double number = g_ascii_strtod(begin, &end);
    if (end != begin && *end == '\0') {
        return number != 0;
    }
    const std::size_t first = text.find_first_not_of(" \t\n\v\f\r");
    std::size_t place = first == std::string::npos ? text.size() : first;
    if (place < text.size() && (text[place] == '+' || text[place] == '-')) {
        ++place;
    }
    place = text.find_first_not_of('0', place);
    return place != std::string::npos && std::strchr("YyTt123456789", text[place]) != nullptr;
}

class KeyFileDefaults : public UserDefaults {
public:
    explicit KeyFileDefaults(std::string path) : path_(std::move(path)), file_(load(path_).file) {}

    bool hasObject(const std::string& key) const override { return stringForKey(key).has_value(); }

    bool boolForKey(const std::string& key) const override {
        const std::optional<std::string> text = stringForKey(key);
        return text && truth(*text);
    }

    std::optional<std::string> stringForKey(const std::string& key) const override {
        if (const auto kept = unsaved_.find(key); kept != unsaved_.end()) {
            return kept->second;
        }
        const GText text(g_key_file_get_string(file_.get(), kGroup, key.c_str(), nullptr));
        if (text) {
            return std::string(text.get());
        }
        // A value that is there but breaks the file's rules for text is taken as it stands.
        const GText raw(g_key_file_get_value(file_.get(), kGroup, key.c_str(), nullptr));
        return raw ? std::optional<std::string>(raw.get()) : std::nullopt;
    }

    void setBool(bool value, const std::string& key) override { setString(value ? "true" : "false", key); }

    void setString(const std::string& value, const std::string& key) override {
        assertMainThread();
        unsaved_.insert_or_assign(key, value);
        save();
    }

private:
    // The file is read again first: what another program wrote meanwhile stays.
    void save() {
        if (path_.empty() || !mayWrite(path_)) {
            return;
        }
        Loaded fresh = load(path_);
        std::map<std::string, std::string> unwritable;
        for (const auto& [key, value] : unsaved_) {
            if (canBeWritten(key, value)) {
                g_key_file_set_string(fresh.file.get(), kGroup, key.c_str(), value.c_str());
            } else {
                unwritable.emplace(key, value);
            }
        }
        if (write(fresh)) {
            file_ = std::move(fresh.file);
            unsaved_ = std::move(unwritable);
        }
    }

    static bool canBeWritten(const std::string& key, const std::string& value) {
        const auto holdsNul = [](const std::string& text) { return text.find('\0') != std::string::npos; };
        return !key.empty() && key.find_first_of("[]=\n\r \t#") == std::string::npos && !holdsNul(key) &&
               !holdsNul(value) && isValidUtf8(key) && isValidUtf8(value);
    }

    bool write(const Loaded& content) const {
        const std::string target = resolved(path_);
        const std::string folder = std::filesystem::path(target).parent_path().string();
        if (g_mkdir_with_parents(folder.c_str(), kFolderMode) != 0) {
            return false;
        }
        if (content.state == FileState::damaged) {
            // The user's own mistake in the file is not thrown away with it.
            std::error_code ignored;
            std::filesystem::copy_file(target, target + ".damaged", std::filesystem::copy_options::overwrite_existing,
                                       ignored);
        }
        gsize length = 0;
        const GText text(g_key_file_to_data(content.file.get(), &length, nullptr));
        return g_file_set_contents_full(target.c_str(), text.get(), static_cast<gssize>(length),
                                        G_FILE_SET_CONTENTS_CONSISTENT, kFileMode, nullptr) != 0;
    }

    const std::string path_;
    KeyFile file_;
    // Values that could not be written yet; the next change tries again.
    std::map<std::string, std::string> unsaved_;
};

} // namespace

std::string userDefaultsPath() {
    const std::filesystem::path tail = std::filesystem::path("Vantorel") / "defaults.ini";
    const char* base = g_getenv("XDG_CONFIG_HOME");
    if (base != nullptr && g_path_is_absolute(base)) {
        return (base / tail).string();
    }
    // A home folder that is not there is not made.
    const char* home = g_get_home_dir();
    if (home == nullptr || !g_file_test(home, G_FILE_TEST_IS_DIR)) {
        return {};
    }
    return (std::filesystem::path(home) / ".config" / tail).string();
}

std::unique_ptr<UserDefaults> makeUserDefaults(const std::string& path) {
    return std::make_unique<KeyFileDefaults>(path);
}

std::unique_ptr<UserDefaults> makeUserDefaults() { return makeUserDefaults(userDefaultsPath()); }

} // namespace vantorel::gtk
