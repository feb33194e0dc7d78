// Vantorel. MIT licence, see LICENSE.
// What a page's scripts ask of the user: alert, confirm, prompt, and leave to go.
#include "platform/linux/script_panels.h"

#include "platform/linux/c_text.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace vantorel::gtk {

namespace {

/// A question that is open. Answered by the first call of `answer`, or as dismissed when nobody is left to answer it.
class Question {
public:
    explicit Question(WebKitScriptDialog* dialog) : dialog_(webkit_script_dialog_ref(dialog)) {}
    Question(const Question&) = delete;
    Question& operator=(const Question&) = delete;
    ~Question() {
        answer([](WebKitScriptDialog*) {});
        webkit_script_dialog_unref(dialog_);
    }

    void answer(const std::function<void(WebKitScriptDialog*)>& write) {
        if (answered_) {
            return;
        }
        answered_ = true;
        write(dialog_);
        // WebKitGTK 2.50 crashes when a dialog is closed inside the signal's handler; there the last unref closes it.
        if (handlerReturned_) {
            webkit_script_dialog_close(dialog_);
        }
    }

    void setHandlerReturned() { handlerReturned_ = true; }

private:
    WebKitScriptDialog* dialog_;
    bool answered_ = false;
    bool handlerReturned_ = false;
};

void ask(const std::shared_ptr<Question>& question, WebKitScriptDialog* dialog, WebView& view, UiDelegate& delegate) {
    const std::string message = textOf(webkit_script_dialog_get_message(dialog));
    switch (webkit_script_dialog_get_dialog_type(dialog)) {
    case WEBKIT_SCRIPT_DIALOG_ALERT:
        delegate.runAlertPanel(view, message, [question] { question->answer([](WebKitScriptDialog*) {}); });
        break;
    case WEBKIT_SCRIPT_DIALOG_CONFIRM:
        delegate.runConfirmPanel(view, message, [question](bool confirmed) {
            question->answer([confirmed](WebKitScriptDialog* open) {
                webkit_script_dialog_confirm_set_confirmed(open, confirmed ? TRUE : FALSE);
            });
        });
        break;
    case WEBKIT_SCRIPT_DIALOG_PROMPT: {
        const char* defaultText = webkit_script_dialog_prompt_get_default_text(dialog);
        delegate.runTextInputPanel(view, message,
                                   defaultText != nullptr ? std::optional<std::string>(defaultText) : std::nullopt,
                                   [question](const std::optional<std::string>& answer) {
                                       question->answer([&answer](WebKitScriptDialog* open) {
                                           if (answer) {
                                               webkit_script_dialog_prompt_set_text(open, answer->c_str());
                                           }
                                       });
                                   });
        break;
    }
    case WEBKIT_SCRIPT_DIALOG_BEFORE_UNLOAD_CONFIRM:
        break;
    }
}

} // namespace

bool runScriptDialog(WebKitScriptDialog* dialog, WebView& view, const std::shared_ptr<UiDelegate>& delegate) {
    const auto question = std::make_shared<Question>(dialog);
    if (webkit_script_dialog_get_dialog_type(dialog) == WEBKIT_SCRIPT_DIALOG_BEFORE_UNLOAD_CONFIRM) {
        question->answer([](WebKitScriptDialog* open) { webkit_script_dialog_confirm_set_confirmed(open, TRUE); });
    } else if (delegate) {
        ask(question, dialog, view, *delegate);
    }
    if (question.use_count() == 1) {
        question->answer([](WebKitScriptDialog*) {});
    }
    question->setHandlerReturned();
    return true;
}

} // namespace vantorel::gtk
