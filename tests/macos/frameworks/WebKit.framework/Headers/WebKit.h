// Vantorel. MIT licence, see LICENSE.
// The part of WebKit that the shell uses, declared from its published API for the cross-build.
#pragma once

#import <AppKit/AppKit.h>
#import <Foundation/Foundation.h>

@class WKContentWorld;
@class WKFrameInfo;
@class WKNavigation;
@class WKWebView;
@class WKWindowFeatures;

NS_ASSUME_NONNULL_BEGIN

extern NSString* const WKWebsiteDataTypeDiskCache;
extern NSString* const WKWebsiteDataTypeMemoryCache;
extern NSString* const WKErrorDomain;

typedef NS_ENUM(NSInteger, WKErrorCode){
    WKErrorJavaScriptResultTypeIsUnsupported = 5,
};

@interface WKWebsiteDataStore : NSObject
+ (WKWebsiteDataStore*)defaultDataStore;
- (void)removeDataOfTypes:(NSSet<NSString*>*)dataTypes
            modifiedSince:(NSDate*)date
        completionHandler:(void (^)(void))completionHandler;
@end

typedef NS_ENUM(NSInteger, WKInactiveSchedulingPolicy){
    WKInactiveSchedulingPolicyNone = 2,
};

@interface WKPreferences : NSObject
@property (nonatomic) BOOL javaScriptCanOpenWindowsAutomatically;
@property (nonatomic) WKInactiveSchedulingPolicy inactiveSchedulingPolicy
    __attribute__((availability(macos, introduced = 14.0)));
@end

@interface WKScriptMessage : NSObject
@property (nonatomic, readonly, copy) id body;
@property (nonatomic, readonly, copy) NSString* name;
@end

@class WKUserContentController;

@protocol WKScriptMessageHandler <NSObject>
@required
- (void)userContentController:(WKUserContentController*)userContentController
      didReceiveScriptMessage:(WKScriptMessage*)message;
@end

typedef NS_ENUM(NSInteger, WKUserScriptInjectionTime){
    WKUserScriptInjectionTimeAtDocumentStart = 0,
    WKUserScriptInjectionTimeAtDocumentEnd = 1,
};

@interface WKUserScript : NSObject
- (instancetype)initWithSource:(NSString*)source
                 injectionTime:(WKUserScriptInjectionTime)injectionTime
              forMainFrameOnly:(BOOL)forMainFrameOnly;
@end

@interface WKUserContentController : NSObject
- (void)addUserScript:(WKUserScript*)userScript;
- (void)addScriptMessageHandler:(id<WKScriptMessageHandler>)scriptMessageHandler name:(NSString*)name;
@end

@interface WKWebViewConfiguration : NSObject
@property (nonatomic, strong) WKPreferences* preferences;
@property (nonatomic, strong) WKUserContentController* userContentController;
@property (nonatomic, strong) WKWebsiteDataStore* websiteDataStore;
@end

@interface WKNavigationAction : NSObject
@property (nonatomic, readonly, copy) NSURLRequest* request;
@end

@protocol WKNavigationDelegate <NSObject>
@optional
- (void)webView:(WKWebView*)webView didFinishNavigation:(null_unspecified WKNavigation*)navigation;
- (void)webView:(WKWebView*)webView
    didFailNavigation:(null_unspecified WKNavigation*)navigation
            withError:(NSError*)error;
- (void)webView:(WKWebView*)webView
    didFailProvisionalNavigation:(null_unspecified WKNavigation*)navigation
                       withError:(NSError*)error;
@end

@protocol WKUIDelegate <NSObject>
@optional
- (nullable WKWebView*)webView:(WKWebView*)webView
    createWebViewWithConfiguration:(WKWebViewConfiguration*)configuration
               forNavigationAction:(WKNavigationAction*)navigationAction
                    windowFeatures:(WKWindowFeatures*)windowFeatures;
- (void)webView:(WKWebView*)webView
    runJavaScriptAlertPanelWithMessage:(NSString*)message
                      initiatedByFrame:(WKFrameInfo*)frame
                     completionHandler:(void (^)(void))completionHandler;
- (void)webView:(WKWebView*)webView
    runJavaScriptConfirmPanelWithMessage:(NSString*)message
                        initiatedByFrame:(WKFrameInfo*)frame
                       completionHandler:(void (^)(BOOL result))completionHandler;
- (void)webView:(WKWebView*)webView
    runJavaScriptTextInputPanelWithPrompt:(NSString*)prompt
                              defaultText:(nullable NSString*)defaultText
                         initiatedByFrame:(WKFrameInfo*)frame
                        completionHandler:(void (^)(NSString* _Nullable result))completionHandler;
@end

@interface WKWebView : NSView
- (instancetype)initWithFrame:(CGRect)frame configuration:(WKWebViewConfiguration*)configuration;
@property (nullable, nonatomic, weak) id<WKNavigationDelegate> navigationDelegate;
@property (nullable, nonatomic, weak) id<WKUIDelegate> UIDelegate;
- (nullable WKNavigation*)loadRequest:(NSURLRequest*)request;
- (nullable WKNavigation*)reload;
- (void)evaluateJavaScript:(NSString*)javaScriptString
         completionHandler:(void (^_Nullable)(id _Nullable, NSError* _Nullable error))completionHandler;
@property (nonatomic) BOOL allowsBackForwardNavigationGestures;
@property (nonatomic) CGFloat pageZoom __attribute__((availability(macos, introduced = 11.0)));
@end

NS_ASSUME_NONNULL_END
