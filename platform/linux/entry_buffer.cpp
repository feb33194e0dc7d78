// Vantorel. MIT licence, see LICENSE.
// An entry's text without the limit of 65534 bytes that GTK 4's own buffer has.
#include <string>

#include "platform/linux/text_field.h"

namespace vantorel::gtk {
namespace {

struct UnlimitedBuffer {
    GtkEntryBuffer parent;
    std::string* text;
    guint characters;
};
struct UnlimitedBufferClass {
    GtkEntryBufferClass parent;
};

UnlimitedBuffer* asBuffer(gpointer instance) { return static_cast<UnlimitedBuffer*>(instance); }

std::size_t byteOffset(const std::string& text, guint character) {
    return static_cast<std::size_t>(g_utf8_offset_to_pointer(text.c_str(), character) - text.c_str());
}

const char* getText(GtkEntryBuffer* buffer, gsize* bytes) {
    const std::string& text = *asBuffer(buffer)->text;
    if (bytes != nullptr)
        *bytes = text.size();
    return text.c_str();
}

guint getLength(GtkEntryBuffer* buffer) { return asBuffer(buffer)->characters; }

guint insertText(GtkEntryBuffer* buffer, guint position, const char* chars, guint count) {
    UnlimitedBuffer* self = asBuffer(buffer);
    const auto bytes = static_cast<std::size_t>(g_utf8_offset_to_pointer(chars, count) - chars);
    guarded([&] { self->text->insert(byteOffset(*self->text, position), chars, bytes); });
    self->characters += count;
    gtk_entry_buffer_emit_inserted_text(buffer, position, chars, count);
    return count;
}

guint deleteText(GtkEntryBuffer* buffer, guint position, guint count) {
    const guint characters = asBuffer(buffer)->characters;
    if (position > characters)
        position = characters;
    if (count > characters - position)
        count = characters - position;
    if (count > 0)
        gtk_entry_buffer_emit_deleted_text(buffer, position, count);
    return count;
}

// The signal's last handler: those before it still find the text that goes.
void deletedText(GtkEntryBuffer* buffer, guint position, guint count) {
    UnlimitedBuffer* self = asBuffer(buffer);
    const std::size_t begin = byteOffset(*self->text, position);
    self->text->erase(begin, byteOffset(*self->text, position + count) - begin);
    self->characters -= count;
    g_object_notify(G_OBJECT(buffer), "text");
    g_object_notify(G_OBJECT(buffer), "length");
}

void finalize(GObject* object) {
    delete asBuffer(object)->text;
    static_cast<GObjectClass*>(g_type_class_peek(GTK_TYPE_ENTRY_BUFFER))->finalize(object);
}

void initClass(gpointer classPointer, gpointer) {
    auto* bufferClass = static_cast<GtkEntryBufferClass*>(classPointer);
    bufferClass->get_text = getText;
    bufferClass->get_length = getLength;
    bufferClass->insert_text = insertText;
    bufferClass->delete_text = deleteText;
    bufferClass->deleted_text = deletedText;
    G_OBJECT_CLASS(classPointer)->finalize = finalize;
}

void initInstance(GTypeInstance* instance, gpointer) { asBuffer(instance)->text = new std::string; }

} // namespace

Object<GtkEntryBuffer> makeUnlimitedBuffer() {
    static const GType type =
        g_type_register_static_simple(GTK_TYPE_ENTRY_BUFFER, "VantorelEntryBuffer", sizeof(UnlimitedBufferClass),
                                      initClass, sizeof(UnlimitedBuffer), initInstance, GTypeFlags{});
    return Object<GtkEntryBuffer>::take(static_cast<GtkEntryBuffer*>(g_object_new(type, nullptr)));
}

} // namespace vantorel::gtk
