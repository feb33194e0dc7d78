// Vantorel. MIT licence, see LICENSE.
// Foundation: basic types, geometry, errors, exceptions.
#pragma once

#import <CoreGraphics/CoreGraphics.h>
#include <stddef.h>
#import <objc/NSObject.h>
#import <objc/objc.h>

@class NSArray<ObjectType>;
@class NSData;
@class NSDate;
@class NSDictionary<KeyType, ObjectType>;
@class NSString;
@class NSURL;

#define NS_ASSUME_NONNULL_BEGIN _Pragma("clang assume_nonnull begin")
#define NS_ASSUME_NONNULL_END _Pragma("clang assume_nonnull end")
#define NS_ENUM(type, name) \
    enum name : type name;  \
    enum __attribute__((enum_extensibility(open))) name : type
#define NS_OPTIONS(type, name) \
    type name;                 \
    enum : type

NS_ASSUME_NONNULL_BEGIN

typedef double NSTimeInterval;
typedef CGRect NSRect;
typedef CGSize NSSize;
typedef CGPoint NSPoint;

typedef struct {
    unsigned long state;
    id __unsafe_unretained _Nullable* _Nullable itemsPtr;
    unsigned long* _Nullable mutationsPtr;
    unsigned long extra[5];
} NSFastEnumerationState;

@protocol NSFastEnumeration
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id __unsafe_unretained _Nullable[_Nonnull])buffer
                                    count:(NSUInteger)len;
@end

@protocol NSCopying
@end

typedef struct {
    NSUInteger location;
    NSUInteger length;
} NSRange;

static inline NSRange NSMakeRange(NSUInteger loc, NSUInteger len) {
    NSRange range = {loc, len};
    return range;
}

static inline NSRect NSMakeRect(CGFloat x, CGFloat y, CGFloat w, CGFloat h) {
    NSRect rect = {{x, y}, {w, h}};
    return rect;
}

static inline NSPoint NSMakePoint(CGFloat x, CGFloat y) {
    NSPoint point = {x, y};
    return point;
}

static inline NSSize NSMakeSize(CGFloat w, CGFloat h) {
    NSSize size = {w, h};
    return size;
}

#ifdef __cplusplus
extern "C" {
#endif

NSString* NSStringFromRect(NSRect aRect);
NSRect NSRectFromString(NSString* aString);
NSString* NSStringFromSelector(SEL aSelector);
SEL NSSelectorFromString(NSString* aSelectorName);

#ifdef __cplusplus
}
#endif

static inline CFTypeRef _Nullable CFBridgingRetain(id _Nullable X) {
    return (__bridge_retained CFTypeRef)X;
}

@interface NSObject (NSKeyValueCoding)
- (void)setValue:(nullable id)value forKey:(NSString*)key;
@end

typedef NSString* NSErrorDomain;
typedef NSString* NSErrorUserInfoKey;

@interface NSError : NSObject
+ (instancetype)errorWithDomain:(NSErrorDomain)domain
                           code:(NSInteger)code
                       userInfo:(nullable NSDictionary<NSErrorUserInfoKey, id>*)dict;
@property (readonly, copy) NSString* domain;
@property (readonly) NSInteger code;
@property (readonly, copy) NSString* localizedDescription;
@end

@interface NSException : NSObject
@property (readonly, copy, nullable) NSString* reason;
@end

@interface NSNotification : NSObject
@end

@interface NSTimer : NSObject
+ (NSTimer*)timerWithTimeInterval:(NSTimeInterval)interval repeats:(BOOL)repeats block:(void (^)(NSTimer* timer))block;
- (void)invalidate;
@end

typedef NSString* NSRunLoopMode;
extern NSRunLoopMode const NSRunLoopCommonModes;
extern NSRunLoopMode const NSDefaultRunLoopMode;

@interface NSRunLoop : NSObject
@property (class, readonly, strong) NSRunLoop* mainRunLoop;
- (void)addTimer:(NSTimer*)timer forMode:(NSRunLoopMode)mode;
@end

NS_ASSUME_NONNULL_END
