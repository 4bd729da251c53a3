package zorsuite;

import java.nio.charset.StandardCharsets;

/** What the native side calls, on any thread. Nothing of the application's is thrown back at it. */
final class Callbacks {
  private Callbacks() {}

  static boolean post(long closure) { return MainQueue.post(closure); }

  static void onModule(ZorSuiteListener listener, boolean smart, byte[] id, byte[] ip, byte[] version,
      byte[] capabilities, byte[] extension) {
    try {
      final ZorModule module = new ZorModule(id, ip, version, capabilities, extension);
      if (smart) {
        listener.onSmartFound(module);
      } else {
        listener.onSearchFound(module);
      }
    } catch (Throwable thrown) {
      log("a listener threw ", thrown);
    }
  }

  static boolean onSocket(ZorSocketHook hook, int descriptor) {
    try {
      return hook.onSocket(descriptor);
    } catch (Throwable thrown) {
      log("a socket hook threw ", thrown);
      return false;
    }
  }

  static void onLine(ZorLogSink sink, byte[] line) {
    try {
      sink.onLine(line);
    } catch (Throwable thrown) {
      // There is no other place to say so.
    }
  }

  private static void log(String text, Throwable thrown) {
    try {
      Native.logLine((text + thrown).getBytes(StandardCharsets.UTF_8));
    } catch (Throwable again) {
      // The application's failure stays the application's.
    }
  }
}
