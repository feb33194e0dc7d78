// Vantorel. MIT licence, see LICENSE.
// RAII over GLib: owned objects, signal connections, and closures that C code may call.
#pragma once

#include <glib-object.h>

#include <functional>
#include <memory>
#include <utility>

namespace vantorel::gtk {

/// One reference to a GObject, or none. Copies share the object.
template<typename T>
class Object {
public:
    Object() = default;
    /// Takes over the reference that the caller got ("transfer full"). Null is allowed.
    static Object take(T* object) { return Object(object); }
    /// Adds a reference of its own ("transfer none"); a floating object, as new widgets are, is sunk.
    static Object share(T* object) {
        if (object != nullptr)
            g_object_ref_sink(object);
        return Object(object);
    }

    Object(const Object& other) : object_(other.object_) {
        if (object_ != nullptr)
            g_object_ref(object_);
    }
    Object(Object&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    Object& operator=(Object other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~Object() {
        if (object_ != nullptr)
            g_object_unref(object_);
    }

    T* get() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }
    void reset() { *this = Object(); }

private:
    explicit Object(T* object) : object_(object) {}

    T* object_ = nullptr;
};

/// Frees what GLib allocated with g_malloc.
struct GFree {
    void operator()(void* memory) const { g_free(memory); }
};
using GText = std::unique_ptr<char, GFree>;

struct GErrorFree {
    void operator()(GError* error) const { g_error_free(error); }
};
using GErrorPointer = std::unique_ptr<GError, GErrorFree>;

/// Runs `function` where C code is the caller: an exception must not unwind through its frames, so it ends the process.
template<typename Function, typename... Arguments>
auto guarded(Function&& function, Arguments&&... arguments) noexcept {
    return std::forward<Function>(function)(std::forward<Arguments>(arguments)...);
}

/// A connected signal handler; disconnected when released. Keeps its instance alive until then.
class SignalConnection {
public:
    SignalConnection() = default;
    SignalConnection(gpointer instance, gulong handler)
        : instance_(Object<GObject>::share(G_OBJECT(instance))),
          handler_(handler) {}
    SignalConnection(const SignalConnection&) = delete;
    SignalConnection& operator=(const SignalConnection&) = delete;
    SignalConnection(SignalConnection&& other) noexcept
        : instance_(std::move(other.instance_)),
          handler_(std::exchange(other.handler_, 0)) {}
    SignalConnection& operator=(SignalConnection&& other) noexcept {
        disconnect();
        instance_ = std::move(other.instance_);
        handler_ = std::exchange(other.handler_, 0);
        return *this;
    }
    ~SignalConnection() { disconnect(); }

    void disconnect() {
        // Disposing an object takes its handlers away by itself.
        if (instance_ && handler_ != 0 && g_signal_handler_is_connected(instance_.get(), handler_) != 0) {
            g_signal_handler_disconnect(instance_.get(), handler_);
        }
        handler_ = 0;
        instance_.reset();
    }

private:
    Object<GObject> instance_;
    gulong handler_ = 0;
};

/// The C side of a handler with the given signature; see `connect`.
template<typename Signature>
struct SignalTrampoline;
template<typename R, typename... Args>
struct SignalTrampoline<R(Args...)> {
    static R call(gpointer, Args... args, gpointer data) {
        return guarded(*static_cast<std::function<R(Args...)>*>(data), args...);
    }
    static void free(gpointer data, GClosure*) { delete static_cast<std::function<R(Args...)>*>(data); }
};

/// Connects `handler` to `signal` of `instance`. The signature is the signal's own, without instance and user data:
///     connection_ = connect<void(GParamSpec*)>(window, "notify::title", [this](GParamSpec*) { … });
/// The closure is freed with the connection. It may release its own connection while it runs.
template<typename Signature>
[[nodiscard]] SignalConnection connect(gpointer instance, const char* signal, std::function<Signature> handler) {
    using Trampoline = SignalTrampoline<Signature>;
    const gulong id =
        g_signal_connect_data(instance, signal, G_CALLBACK(&Trampoline::call),
                              new std::function<Signature>(std::move(handler)), &Trampoline::free, GConnectFlags{});
    return SignalConnection(instance, id);
}

/// A GLib source that is removed when released; 0 is none. One-shot callbacks must call `forget` when they have run.
class SourceId {
public:
    SourceId() = default;
    explicit SourceId(guint id) : id_(id) {}
    SourceId(const SourceId&) = delete;
    SourceId& operator=(const SourceId&) = delete;
    SourceId(SourceId&& other) noexcept : id_(std::exchange(other.id_, 0)) {}
    SourceId& operator=(SourceId&& other) noexcept {
        if (id_ != 0)
            g_source_remove(id_);
        id_ = std::exchange(other.id_, 0);
        return *this;
    }
    ~SourceId() {
        if (id_ != 0)
            g_source_remove(id_);
    }
    /// GLib removes the source by itself, for example because its callback returned G_SOURCE_REMOVE.
    void forget() { id_ = 0; }
    explicit operator bool() const { return id_ != 0; }

private:
    guint id_ = 0;
};

} // namespace vantorel::gtk
