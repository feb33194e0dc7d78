// Vantorel. MIT licence, see LICENSE.
// Stand-ins for what GNUstep's Foundation lacks, and the tests' main, which gives them a pool for autoreleased objects.
#import <AppKit/AppKit.h>

#include <gtest/gtest.h>

@implementation NSColor

+ (NSColor*)colorWithCalibratedRed:(CGFloat)red green:(CGFloat)green blue:(CGFloat)blue alpha:(CGFloat)alpha {
    NSColor* const color = [[NSColor alloc] init];
    color->red = red;
    color->green = green;
    color->blue = blue;
    color->alpha = alpha;
    return [color autorelease];
}

+ (NSColor*)clearColor {
    return [NSColor colorWithCalibratedRed:0 green:0 blue:0 alpha:0];
}

+ (NSColor*)orangeColor {
    return [NSColor colorWithCalibratedRed:1 green:0.5 blue:0 alpha:1];
}

+ (NSColor*)redColor {
    return [NSColor colorWithCalibratedRed:1 green:0 blue:0 alpha:1];
}

+ (NSColor*)systemGreenColor {
    return [NSColor colorWithCalibratedRed:0 green:1 blue:0 alpha:1];
}

@end

@implementation NSFileManager (StandIn)

- (BOOL)setAttributes:(NSDictionary*)attributes ofItemAtPath:(NSString*)path error:(NSError**)error {
    if ([self changeFileAttributes:attributes atPath:path]) {
        return YES;
    }
    *error = [NSError errorWithDomain:NSCocoaErrorDomain code:4 userInfo:nil];
    return NO;
}

@end

namespace {

constexpr CFTypeID kBooleanType = 1;

} // namespace

CFTypeID CFGetTypeID(CFTypeRef value) {
    const id object = static_cast<id>(const_cast<void*>(value));
    return [object isKindOfClass:[[NSNumber numberWithBool:YES] class]] ? kBooleanType : 0;
}

CFTypeID CFBooleanGetTypeID(void) {
    return kBooleanType;
}

int main(int count, char** arguments) {
    NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
    ::testing::InitGoogleTest(&count, arguments);
    const int status = RUN_ALL_TESTS();
    [pool release];
    return status;
}
