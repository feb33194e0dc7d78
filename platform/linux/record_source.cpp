// Vantorel. MIT licence, see LICENSE.
// Every key press of an X server, through its RECORD extension.
//
// The server sends what it has recorded when it next writes to any client, which may be much later when no window takes
// the keys (X.Org 21.1). So raw key presses of XInput2, which come by themselves, are taken as a call to ask the server
// something; and while a key is held, whose repeats have no raw events, it is asked again and again.

#include "platform/linux/record_source.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <X11/Xlib.h>

#include <X11/extensions/record.h>
#include <X11/extensions/XInput2.h>
#include <X11/Xproto.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "platform/linux/file_descriptor.h"
#include "platform/linux/keyboard_map.h"
#include "platform/linux/own_windows.h"
#include "platform/linux/thread.h"
#include "platform/linux/x_connection.h"

namespace vantorel::gtk {

namespace {

constexpr int kHeldKeyMilliseconds = 20;
constexpr int kForever = -1;

struct RecordedPress {
    unsigned keyCode;
    unsigned state;
};

// A wire event as the server recorded it, in this machine's byte order.
RecordedPress recordedPress(const unsigned char* bytes) {
    xEvent event;
    std::memcpy(&event, bytes, sizeof event);
    return {event.u.u.detail, event.u.keyButtonPointer.state};
}

void collect(XPointer closure, XRecordInterceptData* data) {
    auto& presses = *reinterpret_cast<std::vector<RecordedPress>*>(closure);
    if (data->category == XRecordFromServer && data->data != nullptr) {
        const std::size_t length = data->data_len * 4;
        for (std::size_t start = 0; start + sizeof(xEvent) <= length; start += sizeof(xEvent)) {
            if (data->data[start] == KeyPress) {
                presses.push_back(recordedPress(data->data + start));
            }
        }
    }
    XRecordFreeData(data);
}

class ServerRecord : public RecordSource {
public:
    ServerRecord(XConnection control, XConnection data, WindowNumbers ownWindows, Handler handler)
        : control_(std::move(control)),
          data_(std::move(data)),
          map_(control_.get()),
          ownWindows_(ownWindows),
          handler_(std::move(handler)),
          stop_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

    ~ServerRecord() override {
        if (thread_.joinable()) {
            const std::uint64_t one = 1;
            [[maybe_unused]] const ssize_t written = ::write(stop_.get(), &one, sizeof one);
            thread_.join();
        }
        if (context_ != 0) {
            XRecordDisableContext(control_.get(), context_);
            XRecordFreeContext(control_.get(), context_);
            XSync(control_.get(), False);
        }
    }
    ServerRecord(const ServerRecord&) = delete;
    ServerRecord& operator=(const ServerRecord&) = delete;

    bool begin() {
        int major = 0;
        int minor = 0;
        if (!stop_ || !hasExtension(control_.get(), "RECORD") ||
            XRecordQueryVersion(control_.get(), &major, &minor) == 0 || !makeContext()) {
            return false;
        }
        wakeOnRawPresses();
        if (XRecordEnableContextAsync(data_.get(), context_, collect, reinterpret_cast<XPointer>(&presses_)) == 0) {
            return false;
        }
        XFlush(data_.get());
        try {
            thread_ = startThread("key-record", [this] { watch(); });
        } catch (const std::system_error&) {
            return false;
        }
        return true;
    }

private:
    bool makeContext() {
        XRecordRange* range = XRecordAllocRange();
        if (range == nullptr) {
            return false;
        }
        range->device_events.first = KeyPress;
        range->device_events.last = KeyPress;
        XRecordClientSpec everyone = XRecordAllClients;
        context_ = XRecordCreateContext(control_.get(), 0, &everyone, 1, &range, 1);
        XFree(range);
        // The other connection must find the context when it enables it.
        XSync(control_.get(), False);
        return context_ != 0;
    }

    void wakeOnRawPresses() {
        int major = 2;
        int minor = 2;
        if (!hasExtension(control_.get(), "XInputExtension") ||
            XIQueryVersion(control_.get(), &major, &minor) != Success) {
            return;
        }
        std::array<unsigned char, XIMaskLen(XI_LASTEVENT)> bits{};
        XISetMask(bits.data(), XI_RawKeyPress);
        XIEventMask mask{XIAllMasterDevices, static_cast<int>(bits.size()), bits.data()};
        XISelectEvents(control_.get(), DefaultRootWindow(control_.get()), &mask, 1);
        XFlush(control_.get());
    }

    void watch() {
        while (true) {
            pollfd watched[3] = {
                {data_.descriptor(), POLLIN, 0}, {control_.descriptor(), POLLIN, 0}, {stop_.get(), POLLIN, 0}};
            const int ready = ::poll(watched, 3, isKeyHeld_ ? kHeldKeyMilliseconds : kForever);
            if ((ready < 0 && errno != EINTR) || watched[2].revents != 0) {
                return;
            }
            mustAsk_ = mustAsk_ || ready == 0;
            // Events that come in with an answer lie in the connection's own queue, where poll does not see them.
            do {
                takeControlEvents();
                // First what has come already: a question takes as long as all the rest of a press's way through here.
                deliver();
                if (std::exchange(mustAsk_, false)) {
                    isKeyHeld_ = isAnyKeyDown();
                    deliver();
                }
            } while (mustAsk_ || XEventsQueued(control_.get(), QueuedAlready) > 0);
        }
    }

    void takeControlEvents() {
        while (XPending(control_.get()) > 0) {
            XEvent event;
            XNextEvent(control_.get(), &event);
            mustAsk_ = mustAsk_ || event.type == GenericEvent;
            map_.notice(event);
        }
    }

    // The answer brings what the server has recorded so far.
    bool isAnyKeyDown() {
        std::array<char, 32> keys{};
        XQueryKeymap(control_.get(), keys.data());
        return std::any_of(keys.begin(), keys.end(), [](char byte) { return byte != 0; });
    }

    void deliver() {
        XRecordProcessReplies(data_.get());
        if (presses_.empty()) {
            return;
        }
        const KeyTarget target =
            hasKeyboard(control_.get(), ownWindows_) ? KeyTarget::ownWindow : KeyTarget::otherProgram;
        // The answer may have brought a change of the layout with it.
        takeControlEvents();
        for (const RecordedPress& press : std::exchange(presses_, {})) {
            if (const auto event = keyEventOf(map_.pressedKey(press.keyCode, press.state))) {
                handler_(*event, target);
            }
        }
    }

    // Before the connections: the last answers of the server come in while its connection is closed.
    std::vector<RecordedPress> presses_;
    const XConnection control_;
    const XConnection data_;
    KeyboardMap map_;
    const WindowNumbers ownWindows_;
    const Handler handler_;
    const FileDescriptor stop_;
    XRecordContext context_ = 0;
    bool isKeyHeld_ = false;
    bool mustAsk_ = false;
    std::thread thread_;
};

} // namespace

std::unique_ptr<RecordSource> RecordSource::start(const std::string& displayName, WindowNumbers ownWindows,
                                                  Handler handler) {
    XConnection control(displayName);
    XConnection data(displayName);
    if (!control || !data) {
        return nullptr;
    }
    auto source = std::make_unique<ServerRecord>(std::move(control), std::move(data), ownWindows, std::move(handler));
    return source->begin() ? std::move(source) : nullptr;
}

} // namespace vantorel::gtk
