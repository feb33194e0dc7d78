# Vantorel. MIT licence, see LICENSE.
"""Mistakes put into copies of the headers and the backend, to prove that the API check finds them."""

# (what it is, where, the right text, the wrong one)
MISTAKES = [
    ("a wrong selector piece", "AppKit", "backing:(NSBackingStoreType)", "backed:(NSBackingStoreType)"),
    ("a piece too many", "AppKit", "- (void)center;", "- (void)center:(nullable id)sender;"),
    ("a wrong class", "AppKit", "@interface NSAlert :", "@interface NSAlertPanel :"),
    ("a wrong superclass", "AppKit", "@interface NSTextField : NSControl", "@interface NSTextField : NSView"),
    ("a method that is not there", "Foundation", "- (void)invalidate;", "- (void)invalidate;\n- (void)restart;"),
    ("an instance method for a class method", "AppKit", "+ (NSMenuItem*)separatorItem;", "- (NSMenuItem*)separatorItem;"),
    ("a read-only property that can be set", "AppKit", "@property (readonly) NSRect frame;", "@property NSRect frame;"),
    ("a property that is not there", "WebKit", "@property (nonatomic) CGFloat pageZoom", "@property (nonatomic) CGFloat zoomFactor"),
    ("a class property for an object's", "Foundation", "@property (readonly, copy) NSString* bundlePath;",
     "@property (class, readonly, copy) NSString* bundlePath;"),
    ("a wrong constant's value", "AppKit", "NSAlertStyleCritical = 2", "NSAlertStyleCritical = 3"),
    ("a constant that is not there", "AppKit", "NSWindowSharingReadOnly = 1", "NSWindowSharingReading = 1"),
    ("an enumeration that is not there", "WebKit", "WKUserScriptInjectionTime)", "WKScriptInjectionTime)"),
    ("a function that is not there", "CoreGraphics", "CGPreflightScreenCaptureAccess", "CGScreenCaptureAccess"),
    ("a function with an argument too many", "ApplicationServices", "AXIsProcessTrusted(void)", "AXIsProcessTrusted(Boolean prompt)"),
    ("an exported constant that is not there", "WebKit", "WKErrorDomain", "WKErrorsDomain"),
    ("a protocol that is not there", "WebKit", "@protocol WKUIDelegate", "@protocol WKUserInterfaceDelegate"),
    ("a protocol's method that is not there", "WebKit", "didFinishNavigation:(null_unspecified", "didEndNavigation:(null_unspecified"),
    ("an optional method taken for required", "AppKit", "@protocol NSApplicationDelegate <NSObject>\n@optional", "@protocol NSApplicationDelegate <NSObject>\n@required"),
    ("a misspelt delegate method", "web_view_delegates.mm", "didFinishNavigation:", "didFinnishNavigation:"),
    ("a misspelt application callback", "application.mm", "applicationWillTerminate:(NSNotification*)",
     "applicationWillExit:(NSNotification*)"),
    ("a misspelt panel callback", "web_view_delegates.mm", "runJavaScriptAlertPanelWithMessage:(NSString*)",
     "runJavaScriptAlertPanel:(NSString*)"),
    ("a redirect callback with a piece missing", "url_session.mm", "newRequest:(NSURLRequest*)__unused request", ""),
    ("a menu action without a method", "application.mm", "- (void)zoomOut {", "- (void)zoomOutwards {"),
]


def _with_mistake(files, where, right, wrong):
    changed = [(name, text.replace(right, wrong) if where in name else text) for name, text in files]
    return changed, changed != files


def run(headers, backend, errors_of):
    """0 when each mistake, planted by itself, is found; prints a line for each."""
    if errors_of(headers, backend):
        print("the sources have mistakes of their own; planted ones prove nothing")
        return 1
    missed = 0
    for what, where, right, wrong in MISTAKES:
        planted_headers, in_headers = _with_mistake(headers, where, right, wrong)
        planted_backend, in_backend = _with_mistake(backend, where, right, wrong)
        if not (in_headers or in_backend):
            print(f"not planted: {what}: {where} no longer holds {right!r}")
            missed += 1
            continue
        try:
            errors = errors_of(planted_headers, planted_backend)
        except Exception as error:  # pylint: disable=broad-except
            errors = [f"unreadable: {error}"]
        if not errors:
            missed += 1
        print(f"{'found' if errors else 'MISSED'}: {what}{': ' + errors[0] if errors else ''}")
    print(f"{len(MISTAKES) - missed} of {len(MISTAKES)} planted mistakes found")
    return 1 if missed else 0
