#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes the stub libraries that the check links against: make_stub_libraries.py SYSROOT

A stub names what a library of macOS exports and where it is installed; the linker needs no more. The lists below are
also what the finished program may refer to: a function or class that is not in them is an error when linking.
"""
import os
import subprocess
import sys

TARGETS = "[ x86_64-macos, arm64-macos ]"

# What is expected of the C library and the language runtimes; everything else of them stays undeclared.
SYSTEM = """
dyld_stub_binder
___stack_chk_fail ___stack_chk_guard ___cxa_atexit ___bzero _bzero __Unwind_Resume
_abort _exit _free _malloc _calloc _realloc _atexit
_memchr _memcmp _memcpy _memmove _memset _strlen _strcmp _strncmp _strchr _strtol _strtoul _strtod _snprintf _vsnprintf
_fclose _fflush _fopen _fprintf _fputs _fputc _putchar _puts _fwrite _printf _stdout _stderr _getenv _usleep
_round _floor _ceil _fmod _trunc _pow
__NSConcreteStackBlock __NSConcreteGlobalBlock __Block_object_assign __Block_object_dispose
__dispatch_main_q _dispatch_after _dispatch_after_f _dispatch_async _dispatch_async_f _dispatch_once _dispatch_time
""".split()

# What lexwend-convert needs beyond that; the application must do without.
COMMAND_LINE = "_close _fstat _isatty _lseek _open _poll _read _signal _stat _write".split()

# What the borrowed C headers make of things that Darwin's spell in another way.
BORROWED = "___errno_location ___assert_fail".split()

OBJC = """
__objc_empty_cache __objc_empty_vtable ___objc_personality_v0
_objc_alloc _objc_alloc_init _objc_allocWithZone _objc_opt_new _objc_opt_class _objc_opt_self _objc_opt_isKindOfClass
_objc_opt_respondsToSelector _objc_msgSend _objc_msgSend_stret _objc_msgSendSuper2 _objc_msgSendSuper2_stret
_objc_autorelease _objc_autoreleasePoolPop _objc_autoreleasePoolPush _objc_autoreleaseReturnValue
_objc_retain _objc_retainAutorelease _objc_retainAutoreleaseReturnValue _objc_retainAutoreleasedReturnValue
_objc_retainBlock _objc_release _objc_storeStrong _objc_unsafeClaimAutoreleasedReturnValue
_objc_copyWeak _objc_destroyWeak _objc_initWeak _objc_loadWeak _objc_loadWeakRetained _objc_moveWeak _objc_storeWeak
_objc_getProperty _objc_setProperty_atomic _objc_setProperty_nonatomic _objc_setProperty_atomic_copy
_objc_setProperty_nonatomic_copy _objc_copyStruct _objc_enumerationMutation _objc_terminate
_objc_getClass _object_getClass _class_getName _class_getInstanceSize _sel_registerName _sel_getName
""".split()

# Each framework: its functions and constants, then its classes.
FRAMEWORKS = {
    "CoreFoundation": ("""
        ___CFConstantStringClassReference ___NSArray0__ ___NSDictionary0__
        _CFRetain _CFRelease _CFAutorelease _CFEqual _CFGetTypeID _CFGetRetainCount _kCFAllocatorDefault
        _CFStringGetTypeID _CFStringCreateWithCString _CFStringCreateWithBytes _CFStringCreateWithCharacters
        _CFStringGetLength _CFStringGetCharacters _CFStringGetCharactersPtr _CFStringGetCStringPtr _CFStringGetCString
        _CFStringGetMaximumSizeForEncoding _CFStringGetBytes _CFStringCompare
        _CFArrayGetTypeID _CFArrayCreate _CFArrayGetCount _CFArrayGetValueAtIndex _kCFTypeArrayCallBacks
        _CFDictionaryGetTypeID _CFDictionaryCreate _CFDictionaryGetCount _CFDictionaryGetValue
        _kCFTypeDictionaryKeyCallBacks _kCFTypeDictionaryValueCallBacks
        _CFDataGetTypeID _CFDataCreate _CFDataGetBytePtr _CFDataGetLength
        _kCFBooleanTrue _kCFBooleanFalse _CFBooleanGetTypeID _CFBooleanGetValue
        _CFNumberGetTypeID _CFNumberGetType _CFNumberGetValue _CFNumberIsFloatType
        _kCFRunLoopDefaultMode _kCFRunLoopCommonModes _CFRunLoopGetMain _CFRunLoopGetCurrent _CFRunLoopRunInMode
        _CFRunLoopPerformBlock _CFRunLoopWakeUp _CFRunLoopRun _CFRunLoopStop _CFAbsoluteTimeGetCurrent
        """, """NSArray NSMutableArray NSDictionary NSMutableDictionary NSSet NSData NSNull NSDate NSTimer NSURL
        NSLocale NSTimeZone NSRunLoop"""),
    "Foundation": ("""_NSLog _NSStringFromClass _NSStringFromSelector _NSClassFromString _NSSelectorFromString
        _NSHomeDirectory _NSZeroPoint _NSZeroRect _NSCocoaErrorDomain _NSPOSIXErrorDomain _NSOSStatusErrorDomain
        _NSLocalizedDescriptionKey _NSDefaultRunLoopMode _NSRunLoopCommonModes
        """, """NSString NSMutableString NSValue NSNumber NSError NSCoder NSFileManager NSFileHandle NSUserDefaults
        NSDateFormatter NSBundle NSProcessInfo NSThread NSOperationQueue NSNotification NSNotificationCenter
        NSDistributedNotificationCenter"""),
    "CoreGraphics": ("""_CGColorGetTypeID _CGColorRetain _CGColorRelease _CGEventGetTypeID _CGEventSourceGetTypeID
        _CGEventSourceCreate _CGEventSourceFlagsState _CGEventCreateKeyboardEvent _CGEventSetFlags _CGEventGetFlags
        _CGEventGetType _CGEventPost""", ""),
    "QuartzCore": ("", "CALayer"),
    "AppKit": ("""_NSApp _NSBeep _NSFontWeightRegular _NSFontWeightMedium _NSFontWeightSemibold _NSFontWeightBold
        _NSPasteboardTypeString _NSPasteboardTypeRTF _NSPasteboardTypeHTML _NSPasteboardTypePNG
        _NSWorkspaceDidWakeNotification _NSWorkspaceWillSleepNotification
        """, """NSFont NSColor NSImage NSResponder NSView NSControl NSTextField NSButton NSMenuItem NSMenu
        NSStatusBarButton NSStatusItem NSStatusBar NSEvent NSPasteboardItem NSPasteboard NSWindow NSWindowController
        NSAlert NSApplication NSRunningApplication NSWorkspace"""),
    "ApplicationServices": ("""_kAXTrustedCheckOptionPrompt _AXIsProcessTrusted _AXIsProcessTrustedWithOptions
        _AXUIElementGetTypeID _AXUIElementCreateSystemWide _AXUIElementCreateApplication
        _AXUIElementCopyAttributeValue _AXUIElementIsAttributeSettable _AXUIElementSetAttributeValue""", ""),
    "Carbon": ("""_GetApplicationEventTarget _GetEventDispatcherTarget _InstallEventHandler
        _RemoveEventHandler _RegisterEventHotKey _UnregisterEventHotKey _GetEventParameter _GetEventClass _GetEventKind
        _GetEventTime _GetCurrentEventTime
        _IsSecureEventInputEnabled _UCKeyTranslate _LMGetKbdType
        _TISInputSourceGetTypeID _TISGetInputSourceProperty _TISCreateInputSourceList
        _TISCopyCurrentKeyboardInputSource _TISCopyCurrentKeyboardLayoutInputSource _TISSelectInputSource
        _kTISPropertyInputSourceCategory _kTISPropertyInputSourceType _kTISPropertyInputSourceIsSelectCapable
        _kTISPropertyInputSourceIsEnabled _kTISPropertyInputSourceIsSelected _kTISPropertyInputSourceID
        _kTISPropertyLocalizedName _kTISPropertyInputSourceLanguages _kTISPropertyUnicodeKeyLayoutData
        _kTISCategoryKeyboardInputSource _kTISTypeKeyboardLayout _kTISTypeKeyboardInputMethodWithoutModes
        _kTISNotifySelectedKeyboardInputSourceChanged _kTISNotifyEnabledKeyboardInputSourcesChanged""", ""),
    "ServiceManagement": ("", "SMAppService"),
}
# The letter of the framework's version; A where nothing is said.
FRAMEWORK_VERSIONS = {"Foundation": "C", "AppKit": "C"}


def stub(path, install_name, symbols, classes=(), reexported=()):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w") as out:
        out.write("--- !tapi-tbd\ntbd-version: 4\n")
        out.write(f"targets: {TARGETS}\ninstall-name: '{install_name}'\n")
        out.write("current-version: 1\ncompatibility-version: 1\n")
        if reexported:
            out.write(f"reexported-libraries:\n  - targets: {TARGETS}\n    libraries: [ {', '.join(reexported)} ]\n")
        out.write(f"exports:\n  - targets: {TARGETS}\n")
        out.write("    symbols: [ " + ", ".join(f"'{symbol}'" for symbol in symbols) + " ]\n")
        if classes:
            out.write("    objc-classes: [ " + ", ".join(classes) + " ]\n")
        out.write("...\n")


def exported_by(library):
    """The dynamic symbols of a library of this system, as Mach-O spells them."""
    out = subprocess.run(["nm", "-D", "--defined-only", library], capture_output=True, text=True, check=True).stdout
    return {"_" + line.split()[-1].split("@")[0] for line in out.splitlines()}


def main(sysroot):
    library = os.path.join(sysroot, "usr/lib")
    llvm = "/usr/lib/llvm-14/lib"
    cxx = {name for source in ("libc++.so.1", "libc++abi.so.1") for name in exported_by(f"{llvm}/{source}")
           if name.startswith(("__Z", "___cxa", "___gxx"))}
    stub(f"{library}/libc++.tbd", "/usr/lib/libc++.1.dylib", sorted(cxx))
    stub(f"{library}/libSystem.tbd", "/usr/lib/libSystem.B.dylib", SYSTEM + COMMAND_LINE + BORROWED)
    stub(f"{library}/libobjc.A.tbd", "/usr/lib/libobjc.A.dylib", OBJC, ["NSObject"])
    os.symlink("libobjc.A.tbd", f"{library}/libobjc.tbd")
    for name, (symbols, classes) in FRAMEWORKS.items():
        version = FRAMEWORK_VERSIONS.get(name, "A")
        stub(f"{sysroot}/System/Library/Frameworks/{name}.framework/{name}.tbd",
             f"/System/Library/Frameworks/{name}.framework/Versions/{version}/{name}", symbols.split(), classes.split(),
             # Nobody names the language runtime when linking; it comes with Foundation.
             ["/usr/lib/libobjc.A.dylib"] if name == "Foundation" else ())
    # ICU is linked statically on a Mac. Here it is a library that this check alone expects.
    icu = exported_by("/usr/lib/x86_64-linux-gnu/libicuuc.so")
    stub(f"{sysroot}/icu/lib/libicuuc.tbd", "@rpath/libicuuc.dylib", sorted(icu))
    stub(f"{sysroot}/icu/lib/libicudata.tbd", "@rpath/libicudata.dylib", ["_icudt_entry_point"])


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    main(sys.argv[1])
