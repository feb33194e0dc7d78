// Vantorel. MIT licence, see LICENSE.
// The preferences' key file with any content: it opens, answers, and keeps what is set from then on.
#include "platform/linux/user_defaults.h"

#include "platform/portable/text.h"
#include "tests/fuzz/oracle.h"

#include <filesystem>
#include <fstream>

using namespace vantorel;

namespace {

/// The file of this process, in memory where there is such a place, since each change is written through to the disk.
const std::string& filePath() {
    static const std::string path = [] {
        const std::filesystem::path memory = "/dev/shm";
        const std::filesystem::path base =
            std::filesystem::is_directory(memory) ? memory : std::filesystem::temp_directory_path();
        std::string folder = (base / "vantorel-fuzz-XXXXXX").string();
        fuzz::check(::mkdtemp(folder.data()) != nullptr, "there is a place for the file");
        return folder + "/defaults.ini";
    }();
    return path;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view content = fuzz::textFrom(data, size);
    std::ofstream(filePath(), std::ios::binary | std::ios::trunc) << content;

    const std::string flags[] = {"alwaysOnTop", "hideInScreenshots", "hasRequestedPermissions"};
    bool wasThere[3] = {};
    bool wasTrue[3] = {};
    // The input itself as a value, as far as the first NUL; between marks, as the frame's text is, since key files drop
    // some blanks at the ends.
    const std::string value = "{" + std::string(content.substr(0, content.find('\0'))) + "}";
    const bool isText = isValidUtf8(value);
    {
        const auto store = gtk::makeUserDefaults(filePath());
        for (std::size_t i = 0; i < 3; ++i) {
            wasThere[i] = store->hasObject(flags[i]);
            wasTrue[i] = store->boolForKey(flags[i]);
            fuzz::check(wasThere[i] == store->stringForKey(flags[i]).has_value(),
                        "an object that is there can be read");
            fuzz::check(wasThere[i] || !wasTrue[i], "an absent key reads as false");
        }
        store->setBool(!wasTrue[0], flags[0]);
        fuzz::check(store->boolForKey(flags[0]) == !wasTrue[0], "what is set is read at once");
        if (isText) {
            store->setString(value, "windowFrame");
            fuzz::check(store->stringForKey("windowFrame") == value, "a text that is set is read at once");
        }
    }
    const auto store = gtk::makeUserDefaults(filePath());
    fuzz::check(store->boolForKey(flags[0]) == !wasTrue[0], "what was set is there at the next launch");
    fuzz::check(!isText || store->stringForKey("windowFrame") == value, "a text that was set too");
    for (std::size_t i = 1; i < 3; ++i) {
        fuzz::check(store->hasObject(flags[i]) == wasThere[i], "the others are there as before");
        fuzz::check(store->boolForKey(flags[i]) == wasTrue[i], "and mean the same");
    }
    return 0;
}
