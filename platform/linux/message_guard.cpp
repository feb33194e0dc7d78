// Vantorel. MIT licence, see LICENSE.
// The script that keeps a page's messages small and few enough for the window to stay responsive.
#include "platform/linux/message_guard.h"

#include <string_view>

#include "platform/portable/script_value_limits.h"

namespace vantorel::gtk {

namespace {

// Everything that a page could replace later is taken at the start. Strict, so that a getter of the page's cannot walk
// up the stack to functions and their arguments. Limits are in code units here, which is never more than in bytes; the
// application cuts to bytes.
constexpr std::string_view kScript = R"((function(name, mark, maxDepth, maxMembers, maxText) {
    'use strict';
    const handlers = window.webkit && window.webkit.messageHandlers;
    if (!handlers || !handlers[name]) return;
    const channel = handlers[name];
    const prototype = Object.getPrototypeOf(channel);
    const native = prototype.postMessage;
    if (typeof native !== 'function' || native.guarded) return;
    const { apply, defineProperty } = Reflect;
    const { isArray } = Array;
    const { keys } = Object;
    const { min } = Math;
    const slice = String.prototype.slice;
    const now = performance.now.bind(performance);
    const later = window.setTimeout.bind(window);
    const post = value => apply(native, channel, [value]);

    // Direct posts in a window of time, and what a bundle may hold.
    const freePosts = 200, freeTime = 100, pace = 8, bundleSize = 500, bundleLength = 65536, shortText = 256;
    let windowStart = 0, posts = 0, timer = false;
    let queue = [], queueHead = 0;

    function cut(text, left) {
        const limit = left.text > shortText ? left.text : shortText;
        const kept = text.length > limit ? apply(slice, text, [0, limit]) : text;
        if (kept.length > shortText) left.text = left.text > kept.length ? left.text - kept.length : 0;
        return kept;
    }
    function copy(value, left, depth) {
        if (typeof value === 'string') return cut(value, left);
        if (typeof value !== 'object' || value === null) {
            return typeof value === 'number' || typeof value === 'boolean' || value === undefined ? value : null;
        }
        if (depth === 0) return null;
        if (isArray(value)) {
            const count = min(value.length, left.members), list = [];
            left.members -= count;
            for (let i = 0; i < count; i++) {
                defineProperty(list, i, { value: copy(value[i], left, depth - 1), enumerable: true, writable: true,
                                          configurable: true });
            }
            return list;
        }
        const record = {};
        const names = keys(value);
        for (let i = 0; i < names.length && left.members > 0; i++) {
            const key = names[i];
            left.members--;
            defineProperty(record, cut(key, left), { value: copy(value[key], left, depth - 1), enumerable: true,
                                                     writable: true, configurable: true });
        }
        return record;
    }
    function encode(value) {
        switch (typeof value) {
        case 'string': return 's' + value.length + ':' + value;
        case 'number': return 'n' + value + ';';
        case 'boolean': return value ? 't' : 'f';
        case 'undefined': return 'z';
        }
        if (value === null) return 'z';
        let text = '';
        if (isArray(value)) {
            for (let i = 0; i < value.length; i++) text += encode(value[i]);
            return 'l' + value.length + ':' + text;
        }
        const names = keys(value);
        for (let i = 0; i < names.length; i++) text += names[i].length + ':' + names[i] + encode(value[names[i]]);
        return 'd' + names.length + ':' + text;
    }
    function flush(all) {
        while (queueHead < queue.length) {
            let bundle = mark;
            for (let i = 0; i < bundleSize && queueHead < queue.length && bundle.length < bundleLength; i++) {
                bundle += queue[queueHead];
                queue[queueHead++] = undefined;
            }
            post(bundle);
            if (all !== true && queueHead < queue.length) {
                later(flush, pace);
                return;
            }
        }
        queue = [];
        queueHead = 0;
        timer = false;
    }
    function postMessage(body) {
        const left = { text: maxText, members: maxMembers };
        const value = copy(body, left, maxDepth);
        if (this !== channel) {
            apply(native, this, [value]);
            return;
        }
        const time = now();
        if (time - windowStart > freeTime) {
            windowStart = time;
            posts = 0;
        }
        // A long text counts as many: each is copied on the application's main thread.
        posts += 1 + (maxText - left.text) / 16384;
        if (!timer && posts <= freePosts) {
            post(value);
            return;
        }
        defineProperty(queue, queue.length, { value: encode(value), writable: true, enumerable: true,
                                              configurable: true });
        if (!timer) {
            timer = true;
            later(flush, pace);
        }
    }
    window.addEventListener('pagehide', () => flush(true));
    postMessage.guarded = true;
    defineProperty(prototype, 'postMessage', { value: postMessage, writable: false, configurable: false,
                                               enumerable: true });
}))";

} // namespace

std::string messageGuardScript(const std::string& name, const std::string& mark) {
    return std::string(kScript) + "('" + name + "', '" + mark + "', " + std::to_string(kMaxScriptValueDepth) + ", " +
           std::to_string(kMaxScriptValueMembers) + ", " + std::to_string(kMaxScriptTextBytes) + ");";
}

} // namespace vantorel::gtk
