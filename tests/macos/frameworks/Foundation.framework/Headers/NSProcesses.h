// Vantorel. MIT licence, see LICENSE.
// Foundation: files, bundle, environment, preferences, child processes.
#pragma once

#import <Foundation/NSBasics.h>
#import <Foundation/NSCollections.h>
#import <Foundation/NSText.h>

NS_ASSUME_NONNULL_BEGIN

typedef NSString* NSFileAttributeKey;
extern NSFileAttributeKey const NSFilePosixPermissions;

@interface NSFileManager : NSObject
@property (class, readonly, strong) NSFileManager* defaultManager;
- (BOOL)fileExistsAtPath:(NSString*)path;
- (BOOL)setAttributes:(NSDictionary<NSFileAttributeKey, id>*)attributes
         ofItemAtPath:(NSString*)path
                error:(NSError* _Nullable* _Nullable)error;
- (NSString*)stringWithFileSystemRepresentation:(const char*)str length:(NSUInteger)len;
@end

@interface NSBundle : NSObject
@property (class, readonly, strong) NSBundle* mainBundle;
@property (readonly, copy) NSString* bundlePath;
@property (readonly, copy, nullable) NSString* executablePath;
@end

typedef NS_OPTIONS(uint64_t, NSActivityOptions){
    NSActivityUserInitiatedAllowingIdleSystemSleep = 0x00EFFFFF,
};

@interface NSProcessInfo : NSObject
@property (class, readonly, strong) NSProcessInfo* processInfo;
@property (readonly, copy) NSDictionary<NSString*, NSString*>* environment;
@property (copy) NSString* processName;
@property (readonly) NSTimeInterval systemUptime;
- (id<NSObject>)beginActivityWithOptions:(NSActivityOptions)options
                                  reason:(NSString*)reason __attribute__((availability(macos, introduced = 10.9)));
@end

@interface NSUserDefaults : NSObject
@property (class, readonly, strong) NSUserDefaults* standardUserDefaults;
- (nullable id)objectForKey:(NSString*)defaultName;
- (void)setObject:(nullable id)value forKey:(NSString*)defaultName;
- (nullable NSString*)stringForKey:(NSString*)defaultName;
- (BOOL)boolForKey:(NSString*)defaultName;
- (void)setBool:(BOOL)value forKey:(NSString*)defaultName;
- (void)removePersistentDomainForName:(NSString*)domainName;
@end

@interface NSFileHandle : NSObject
@property (class, readonly, strong) NSFileHandle* fileHandleWithNullDevice;
@property (readonly) int fileDescriptor;
- (BOOL)closeAndReturnError:(NSError* _Nullable* _Nullable)error __attribute__((availability(macos, introduced = 10.15)));
@end

@interface NSPipe : NSObject
@property (readonly, retain) NSFileHandle* fileHandleForReading;
@property (readonly, retain) NSFileHandle* fileHandleForWriting;
+ (NSPipe*)pipe;
@end

@interface NSTask : NSObject
@property (nullable, copy) NSURL* executableURL;
@property (nullable, copy) NSDictionary<NSString*, NSString*>* environment;
@property (nullable, copy) NSURL* currentDirectoryURL;
@property (nullable, retain) id standardInput;
@property (nullable, retain) id standardOutput;
@property (nullable, retain) id standardError;
- (BOOL)launchAndReturnError:(NSError* _Nullable* _Nullable)error __attribute__((availability(macos, introduced = 10.13)));
- (void)terminate;
@property (readonly) int processIdentifier;
@property (readonly, getter=isRunning) BOOL running;
@property (readonly) int terminationStatus;
@property (nullable, copy) void (^terminationHandler)(NSTask*);
- (void)waitUntilExit;
@end

NS_ASSUME_NONNULL_END
