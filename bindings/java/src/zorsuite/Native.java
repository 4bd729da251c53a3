package zorsuite;

/** The C interface, function by function; see zorsuite.h. Texts are bytes, and a suite is its address. */
final class Native {
  static final int OK = 0;
  static final int ERROR_MEMORY = -3;

  static { System.loadLibrary("ZorSuiteJni"); }

  private Native() {}

  static native String versionText();

  static native long suiteCreate();

  static native void suiteFree(long suite);

  static native int suiteSetListener(long suite, ZorSuiteListener listener);

  static native int smartConfigV5Start(long suite, byte[] ssid, byte[] passPhrase, int timeoutMs);

  static native int smartConfigV3Start(long suite, byte[] ssid, byte[] passPhrase, int timeoutMs);

  static native int smartConfigV5Append(long suite, byte[] bytes);

  static native int smartConfigV5SetProperty(long suite, byte[] values);

  static native int smartConfigV5MixV3Enable(long suite, boolean mix);

  static native int smartConfigOnlineListen(long suite, int port);

  static native int smartConfigStop(long suite);

  static native int smartConfigProgress(long suite);

  static native int smartConfigStatus();

  static native int smartConfigReport(long suite, long[] numbers);

  static native int makePortRecord(int port, byte[] record);

  static native int deviceSearch(long suite);

  static native int deviceSearchSetProperty(long suite, int intervalMs, int count);

  static native int deviceSearchReport(long suite, long[] numbers);

  static native int deviceUpgrade(long suite, byte[] ip, byte[] url);

  static native int deviceUpgradeProgress(long suite);

  static native int deviceUpgradeReport(long suite, long[] numbers);

  static native int workerIsRunning(int worker);

  static native int workerCancel(int worker);

  static native int workerWait(int worker);

  static native int getTunable(int tunable);

  static native int setTunable(int tunable, int value);

  static native int findPace(byte[] name, byte[] values);

  static native int setInterface(byte[] name);

  static native int setSocketHook(ZorSocketHook hook);

  static native int setLogSink(ZorLogSink sink);

  static native int logLine(byte[] line);

  static native long clockMs();

  static native void closureRun(long closure);

  static native void closureFree(long closure);
}
