// Vantorel. MIT licence, see LICENSE.
// The part of AVFoundation that the shell uses, declared from its published API for the cross-build.
#pragma once

#import <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

typedef NSString* AVMediaType;
extern AVMediaType const AVMediaTypeAudio;

typedef NS_ENUM(NSInteger, AVAuthorizationStatus){
    AVAuthorizationStatusNotDetermined = 0,
    AVAuthorizationStatusRestricted = 1,
    AVAuthorizationStatusDenied = 2,
    AVAuthorizationStatusAuthorized = 3,
};

@interface AVCaptureDevice : NSObject
+ (AVAuthorizationStatus)authorizationStatusForMediaType:(AVMediaType)mediaType
    __attribute__((availability(macos, introduced = 10.14)));
+ (void)requestAccessForMediaType:(AVMediaType)mediaType
                completionHandler:(void (^)(BOOL granted))handler __attribute__((availability(macos, introduced = 10.14)));
@end

NS_ASSUME_NONNULL_END
