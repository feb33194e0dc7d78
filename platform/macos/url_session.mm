// Vantorel. MIT licence, see LICENSE.
// HTTP without a window over the shared NSURLSession.
#import "platform/macos/url_session.h"

#include <dispatch/dispatch.h>

#include <utility>

#import "platform/macos/addresses.h"
#import "platform/macos/bridge.h"

/// Takes a redirect for the answer that it is.
@interface VantorelRedirectRefuser : NSObject <NSURLSessionTaskDelegate>
@end

@implementation VantorelRedirectRefuser

- (void)URLSession:(NSURLSession*)__unused session
                          task:(NSURLSessionTask*)__unused task
    willPerformHTTPRedirection:(NSHTTPURLResponse*)__unused response
                    newRequest:(NSURLRequest*)__unused request
             completionHandler:(void (^)(NSURLRequest*))completionHandler {
    completionHandler(nil);
}

@end

namespace vantorel::mac {

namespace {

UrlResult toResult(NSURLResponse* response, NSError* error) {
    UrlResult result;
    result.error = toPlatformError(error);
    if ([response isKindOfClass:NSHTTPURLResponse.class]) {
        result.statusCode = static_cast<int>(static_cast<NSHTTPURLResponse*>(response).statusCode);
    }
    return result;
}

class MacDataTask : public DataTask {
public:
    MacDataTask(NSURLSessionDataTask* task, double timeoutSeconds) : task_(task), timeoutSeconds_(timeoutSeconds) {}

    void resume() override {
        [task_ resume];
        // The request's own time-out starts anew with every byte; a body that trickles would never end.
        NSURLSessionDataTask* const task = task_;
        const auto bound = static_cast<int64_t>(timeoutSeconds_ * static_cast<double>(NSEC_PER_SEC));
        dispatch_after(dispatch_time(DISPATCH_TIME_NOW, bound), dispatch_get_global_queue(QOS_CLASS_DEFAULT, 0), ^{
            [task cancel];
        });
    }

private:
    NSURLSessionDataTask* task_;
    double timeoutSeconds_;
};

/// A request that the system cannot even put into words: it fails, as one to a port that nobody can listen on does.
class ImpossibleTask : public DataTask {
public:
    explicit ImpossibleTask(std::function<void(const UrlResult&)> completion) : completion_(std::move(completion)) {}

    void resume() override {
        const std::function<void(const UrlResult&)> completion = std::exchange(completion_, nullptr);
        if (!completion) return;
        dispatch_async(dispatch_get_global_queue(QOS_CLASS_DEFAULT, 0), ^{
            guarded(completion, toResult(nil, badAddressError()));
        });
    }

private:
    std::function<void(const UrlResult&)> completion_;
};

class MacUrlSession : public UrlSession {
public:
    std::shared_ptr<DataTask> dataTask(const UrlRequest& request,
                                       std::function<void(const UrlResult&)> completion) override {
        NSURLRequest* const urlRequest = toURLRequest(request);
        if (urlRequest == nil) return std::make_shared<ImpossibleTask>(std::move(completion));
        NSURLSessionDataTask* const task = [NSURLSession.sharedSession
            dataTaskWithRequest:urlRequest
              completionHandler:^(NSData* __unused data, NSURLResponse* response, NSError* error) {
                  guarded(completion, toResult(response, error));
              }];
        task.delegate = redirectRefuser_;
        return std::make_shared<MacDataTask>(task, request.timeoutSeconds);
    }

private:
    VantorelRedirectRefuser* redirectRefuser_ = [[VantorelRedirectRefuser alloc] init];
};

}  // namespace

std::unique_ptr<UrlSession> makeUrlSession() {
    return std::make_unique<MacUrlSession>();
}

}  // namespace vantorel::mac
