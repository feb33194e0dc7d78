// Vantorel. MIT licence, see LICENSE.
// Foundation: texts, data, numbers, dates.
#pragma once

#import <Foundation/NSBasics.h>

NS_ASSUME_NONNULL_BEGIN

typedef NSUInteger NSStringEncoding;
typedef unsigned short unichar;
enum : NSStringEncoding {
    NSUTF8StringEncoding = 4,
    NSISOLatin1StringEncoding = 5,
};

@interface NSString : NSObject <NSCopying>
@property (readonly) NSUInteger length;
- (nullable instancetype)initWithBytes:(const void*)bytes length:(NSUInteger)len encoding:(NSStringEncoding)encoding;
- (nullable NSData*)dataUsingEncoding:(NSStringEncoding)encoding allowLossyConversion:(BOOL)lossy;
+ (instancetype)stringWithCharacters:(const unichar*)characters length:(NSUInteger)length;
- (void)getCharacters:(unichar*)buffer range:(NSRange)range;
- (BOOL)isEqualToString:(NSString*)aString;
@property (readonly, copy) NSString* stringByDeletingLastPathComponent;
@end

@interface NSData : NSObject
@property (readonly) NSUInteger length;
@property (readonly) const void* bytes;
+ (nullable instancetype)dataWithContentsOfFile:(NSString*)path;
@end

@interface NSValue : NSObject <NSCopying>
@end

@interface NSNumber : NSValue
@property (readonly) BOOL boolValue;
@property (readonly) double doubleValue;
+ (NSNumber*)numberWithBool:(BOOL)value;
+ (NSNumber*)numberWithInt:(int)value;
+ (NSNumber*)numberWithUnsignedInt:(unsigned int)value;
+ (NSNumber*)numberWithDouble:(double)value;
@end

@interface NSNull : NSObject
+ (NSNull*)null;
@end

@interface NSDate : NSObject
+ (instancetype)dateWithTimeIntervalSince1970:(NSTimeInterval)secs;
+ (instancetype)dateWithTimeIntervalSinceNow:(NSTimeInterval)secs;
@end

NS_ASSUME_NONNULL_END
