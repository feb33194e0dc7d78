// Vantorel. MIT licence, see LICENSE.
// Foundation: addresses and HTTP requests.
#pragma once

#import <Foundation/NSBasics.h>
#import <Foundation/NSText.h>

NS_ASSUME_NONNULL_BEGIN

extern NSErrorDomain const NSURLErrorDomain;

enum : NSInteger {
    NSURLErrorBadURL = -1000,
};

@interface NSURL : NSObject
+ (nullable instancetype)URLWithString:(NSString*)URLString;
+ (NSURL*)fileURLWithPath:(NSString*)path;
@property (nullable, readonly, copy) NSString* absoluteString;
@property (nullable, readonly, copy) NSString* path;
@end

typedef NS_ENUM(NSUInteger, NSURLRequestCachePolicy){
    NSURLRequestUseProtocolCachePolicy = 0,
    NSURLRequestReloadIgnoringLocalAndRemoteCacheData = 4,
};

@interface NSURLRequest : NSObject
+ (instancetype)requestWithURL:(NSURL*)URL;
@property (nullable, readonly, copy) NSURL* URL;
@end

@interface NSMutableURLRequest : NSURLRequest
@property NSURLRequestCachePolicy cachePolicy;
@property NSTimeInterval timeoutInterval;
@end

@interface NSURLResponse : NSObject
@end

@interface NSHTTPURLResponse : NSURLResponse
@property (readonly) NSInteger statusCode;
@end

@protocol NSURLSessionTaskDelegate;

@interface NSURLSessionTask : NSObject
@property (nullable, retain) id<NSURLSessionTaskDelegate> delegate __attribute__((availability(macos, introduced = 12.0)));
- (void)cancel;
- (void)resume;
@end

@interface NSURLSessionDataTask : NSURLSessionTask
@end

@interface NSURLSession : NSObject
@property (class, readonly, strong) NSURLSession* sharedSession;
- (NSURLSessionDataTask*)dataTaskWithRequest:(NSURLRequest*)request
                           completionHandler:(void (^)(NSData* _Nullable data, NSURLResponse* _Nullable response,
                                                       NSError* _Nullable error))completionHandler;
@end

@protocol NSURLSessionTaskDelegate <NSObject>
@optional
- (void)URLSession:(NSURLSession*)session
                          task:(NSURLSessionTask*)task
    willPerformHTTPRedirection:(NSHTTPURLResponse*)response
                    newRequest:(NSURLRequest*)request
             completionHandler:(void (^)(NSURLRequest* _Nullable))completionHandler;
@end

NS_ASSUME_NONNULL_END
