package zorsuite;

import java.nio.charset.StandardCharsets;
import java.util.concurrent.Executor;

/**
 * The library's one entry point: starts, steers and stops its workers.
 *
 * <p>All state but the listener is process-wide: two suites drive the same workers, and a start through
 * either replaces the worker of the same kind that the other started.
 *
 * <p>Call the starts and {@link #smartConfigV5Append} from one thread, the application's; any thread may call
 * the rest, {@link #close} too. A start first ends the worker of its kind and waits for it: about a
 * millisecond, or the rest of an upgrade. Nothing else blocks unless it says so.
 *
 * <p>Texts are bytes. A {@code String} is passed on as UTF-8; a network whose name is not UTF-8 takes {@code
 * byte[]}. What is longer than its field is cut, and so is everything from a zero on.
 *
 * <p>The operations of a closed suite throw {@code IllegalStateException}.
 */
public final class ZorSuite implements AutoCloseable {
  /** The UDP port on which modules announce themselves unless a run names another. */
  public static final int ANNOUNCEMENT_PORT = 25010;

  private interface Operation {
    int run(long suite);
  }

  private final long suite;
  private int users;
  private boolean closed;

  /** Has no listener yet. */
  public ZorSuite() {
    suite = Native.suiteCreate();
    if (suite == 0) throw new OutOfMemoryError("no memory for a suite");
  }

  /**
   * Makes {@code executor} run the callbacks of all suites from now on; null restores the default, a daemon
   * thread of the library's. An Android application gives its main looper's, {@code
   * context.getMainExecutor()}. It must run them one at a time and in order, and never inside
   * {@code execute}. A callback that it rejects counts as not reported; at most 1,024 are undelivered at a
   * time.
   */
  public static void setExecutor(Executor executor) { MainQueue.setExecutor(executor); }

  /**
   * Replaces the listener, for callbacks that are queued already too; null for none. What is heard meanwhile
   * is reported to nobody. The suite holds its listener until it is closed.
   */
  public void setListener(ZorSuiteListener listener) {
    check(call(suite -> Native.suiteSetListener(suite, listener)));
  }

  /** Ends no worker. No callback of this suite begins after it. A second call does nothing. */
  @Override
  public synchronized void close() {
    if (closed) return;
    closed = true;
    Native.suiteSetListener(suite, null);
    freeIfUnused();
  }

  /** The library's version, such as "3.5.1". */
  public static String getLibraryVersion() { return Native.versionText(); }

  /** Starts a search, which reports each module once. It ends after its last request. */
  public void deviceSearch() { check(call(Native::deviceSearch)); }

  /** Sets the milliseconds between a search's requests and their number, for a running search too. */
  public void deviceSearchSetProperty(int intervalMs, int count) {
    check(call(suite -> Native.deviceSearchSetProperty(suite, intervalMs, count)));
  }

  /**
   * Tells the module at dotted-quad {@code ip} to fetch the firmware at {@code url}, at most 512 bytes of
   * {@code http://host[:port]/path}, and follows its progress. Waits, without limit, for a running upgrade.
   */
  public void deviceUpgrade(String ip, String url) {
    final byte[] ipBytes = utf8(ip);
    final byte[] urlBytes = utf8(url);
    check(call(suite -> Native.deviceUpgrade(suite, ipBytes, urlBytes)));
  }

  /**
   * 0 requested, 1 command sent, 2..99 per cent, 100 or more done; negative for a failure: -100 silence for
   * 10 s, -111 or -112 URL refused, -121 or -122 no socket or thread, else the module's code.
   */
  public int deviceUpgradeProgress() { return call(Native::deviceUpgradeProgress); }

  /** What the latest search has done. */
  public ZorSearchReport deviceSearchReport() {
    final long[] numbers = new long[ZorSearchReport.NUMBERS];
    check(call(suite -> Native.deviceSearchReport(suite, numbers)));
    return new ZorSearchReport(new Numbers(numbers));
  }

  /** What the latest upgrade has done. */
  public ZorUpgradeReport deviceUpgradeReport() {
    final long[] numbers = new long[ZorUpgradeReport.NUMBERS];
    check(call(suite -> Native.deviceUpgradeReport(suite, numbers)));
    return new ZorUpgradeReport(new Numbers(numbers));
  }

  /**
   * Listens for announcements on UDP {@code port}; outside 1..65534 it takes the first free port from 25010
   * up. Returns the port, or -1 when it is taken or there is no socket, thread or memory.
   */
  public int smartConfigOnlineListen(int port) {
    return Math.max(-1, call(suite -> Native.smartConfigOnlineListen(suite, port)));
  }

  /** Asks the smart configuration senders and the listener for announcements to end. Does not wait. */
  public void smartConfigStop() { check(call(Native::smartConfigStop)); }

  /**
   * The share of the run's time-out that has passed, 0..100, or the negative code of a sender that got no
   * socket. It counts by the wall clock, a step of which can make it any number.
   */
  public int smartConfigProgress() { return call(Native::smartConfigProgress); }

  /** 0, or the code of a sender that got no socket for a frame or no thread. */
  public int smartConfigStatus() { return Native.smartConfigStatus(); }

  /** What the latest smart configuration run and the latest listener have done. */
  public ZorRunReport smartConfigReport() {
    final long[] numbers = new long[ZorRunReport.NUMBERS];
    check(call(suite -> Native.smartConfigReport(suite, numbers)));
    return new ZorRunReport(new Numbers(numbers));
  }

  /**
   * Starts a version 5 run of {@code timeoutMs} milliseconds. Opens no listener for announcements. When the
   * multicast sender ends by the time-out, the run's listener for announcements ends too.
   */
  public void smartConfigV5Start(byte[] ssid, byte[] passPhrase, int timeoutMs) {
    final byte[] ssidBytes = notNull(ssid);
    final byte[] passPhraseBytes = notNull(passPhrase);
    check(call(suite -> Native.smartConfigV5Start(suite, ssidBytes, passPhraseBytes, timeoutMs)));
  }

  /** The same with texts, passed on as UTF-8. */
  public void smartConfigV5Start(String ssid, String passPhrase, int timeoutMs) {
    smartConfigV5Start(utf8(ssid), utf8(passPhrase), timeoutMs);
  }

  /** Sets the application data of later version 5 runs: the first 16 bytes, or none for null. */
  public void smartConfigV5Append(byte[] bytes) {
    check(call(suite -> Native.smartConfigV5Append(suite, bytes)));
  }

  /** The application data that make modules announce themselves on {@code port}, 1..65535. */
  public static byte[] makePortRecord(int port) {
    final byte[] record = new byte[3];
    check(Native.makePortRecord(port, record));
    return record;
  }

  /** Sets the first 14 tunables from as many bytes, unsigned, such as {@link #findPace} returns. */
  public void smartConfigV5SetProperty(byte[] values) {
    final byte[] bytes = notNull(values);
    check(call(suite -> Native.smartConfigV5SetProperty(suite, bytes)));
  }

  /**
   * The 14 values of the pace called {@code name}, such as "default" or "fast"; null for one that is not
   * known.
   */
  public static byte[] findPace(String name) {
    final byte[] values = new byte[14];
    return Native.findPace(utf8(name), values) == Native.OK ? values : null;
  }

  /** Whether later version 5 runs mix version 3 frames in. */
  public void smartConfigV5MixV3Enable(boolean mix) {
    check(call(suite -> Native.smartConfigV5MixV3Enable(suite, mix)));
  }

  /**
   * Starts a listener for announcements on port 25010, which ends with the run, and a version 3 run of {@code
   * timeoutMs} milliseconds. When the port is taken it changes nothing, and the report shows it.
   */
  public void smartConfigV3Start(byte[] ssid, byte[] passPhrase, int timeoutMs) {
    final byte[] ssidBytes = notNull(ssid);
    final byte[] passPhraseBytes = notNull(passPhrase);
    check(call(suite -> Native.smartConfigV3Start(suite, ssidBytes, passPhraseBytes, timeoutMs)));
  }

  /** The same with texts, passed on as UTF-8. */
  public void smartConfigV3Start(String ssid, String passPhrase, int timeoutMs) {
    smartConfigV3Start(utf8(ssid), utf8(passPhrase), timeoutMs);
  }

  /** True while a worker of that kind runs. */
  public static boolean isRunning(ZorWorker worker) { return Native.workerIsRunning(worker.ordinal()) == 1; }

  /** Asks the worker of that kind, if there is one, to end. An upgrade does not listen. */
  public static void cancel(ZorWorker worker) { check(Native.workerCancel(worker.ordinal())); }

  /** Waits, without limit, until no worker of that kind runs. */
  public static void waitFor(ZorWorker worker) { check(Native.workerWait(worker.ordinal())); }

  /** The number that the tunable holds. */
  public static int getTunable(ZorTunable tunable) { return Native.getTunable(tunable.ordinal()); }

  /** Sets the tunable to any number, for running workers too. */
  public static void setTunable(ZorTunable tunable, int value) {
    check(Native.setTunable(tunable.ordinal(), value));
  }

  /**
   * Binds every socket that is opened from now on to a network interface, such as "wlan0"; an empty name
   * leaves the choice to the system's routes again. Returns false, with nothing changed, when there is no
   * such interface or the system lets nobody bind to it. On Android use {@link #setSocketHook}.
   */
  public static boolean setInterface(String name) { return Native.setInterface(utf8(name)) == Native.OK; }

  /** Makes {@code hook} see every socket that is opened from now on; null for none. */
  public static void setSocketHook(ZorSocketHook hook) { check(Native.setSocketHook(hook)); }

  /** Sends the library's log lines to {@code sink}; null restores the default, the system's log. */
  public static void setLogSink(ZorLogSink sink) { check(Native.setLogSink(sink)); }

  /** Milliseconds by the wall clock since the first call: what the reports' times count by. */
  public static long clockMs() { return Native.clockMs(); }

  private int call(Operation operation) {
    MainQueue.freeDropped();
    synchronized (this) {
      if (closed) throw new IllegalStateException("this suite is closed");
      ++users;
    }
    try {
      return operation.run(suite);
    } finally {
      synchronized (this) {
        --users;
        freeIfUnused();
      }
    }
  }

  /** An operation on another thread, or one that is being called back, may outlast {@link #close}. */
  private void freeIfUnused() {
    if (closed && users == 0) Native.suiteFree(suite);
  }

  private static void check(int code) {
    if (code >= Native.OK) return;
    if (code == Native.ERROR_MEMORY) throw new OutOfMemoryError("no memory in the library");
    throw new IllegalArgumentException("refused by the library: " + code);
  }

  private static byte[] utf8(String text) { return text.getBytes(StandardCharsets.UTF_8); }

  private static byte[] notNull(byte[] bytes) {
    if (bytes == null) throw new NullPointerException("the bytes are null");
    return bytes;
  }
}
