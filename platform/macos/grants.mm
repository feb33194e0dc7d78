// Vantorel. MIT licence, see LICENSE.
// The system's privacy grants: screen capture, microphone, accessibility.
#import "platform/macos/grants.h"

#import <AVFoundation/AVFoundation.h>
#import <ApplicationServices/ApplicationServices.h>
#import <CoreGraphics/CoreGraphics.h>

#import "platform/macos/bridge.h"

namespace vantorel::mac {

namespace {

class MacScreenCaptureAccess : public ScreenCaptureAccess {
public:
    bool preflight() override { return CGPreflightScreenCaptureAccess(); }
    void request() override { CGRequestScreenCaptureAccess(); }
};

class MacAudioCaptureAccess : public AudioCaptureAccess {
public:
    AuthorizationStatus authorizationStatus() override {
        return static_cast<AuthorizationStatus>([AVCaptureDevice authorizationStatusForMediaType:AVMediaTypeAudio]);
    }
    void requestAccess(std::function<void(bool granted)> completion) override {
        [AVCaptureDevice requestAccessForMediaType:AVMediaTypeAudio
                                 completionHandler:^(BOOL granted) {
                                     guarded(completion, static_cast<bool>(granted));
                                 }];
    }
};

class MacAccessibility : public Accessibility {
public:
    bool isProcessTrusted() override { return AXIsProcessTrusted(); }
    bool isProcessTrustedWithOptions(bool prompt) override {
        NSDictionary* const options = @{(__bridge NSString*)kAXTrustedCheckOptionPrompt : @(prompt)};
        return AXIsProcessTrustedWithOptions((__bridge CFDictionaryRef)options);
    }
};

}  // namespace

std::unique_ptr<ScreenCaptureAccess> makeScreenCaptureAccess() {
    return std::make_unique<MacScreenCaptureAccess>();
}

std::unique_ptr<AudioCaptureAccess> makeAudioCaptureAccess() {
    return std::make_unique<MacAudioCaptureAccess>();
}

std::unique_ptr<Accessibility> makeAccessibility() {
    return std::make_unique<MacAccessibility>();
}

}  // namespace vantorel::mac
