package zorsuite;

/** Receives the library's log lines, which may hold SSID and pass phrase as they were given: a secret. */
public interface ZorLogSink {
  /**
   * One line, without a line end, as bytes. It is called on the thread that writes, the application's or a
   * worker's, several at a time; a sender waits for it. It must not start a worker. What it throws is
   * dropped.
   */
  void onLine(byte[] line);
}
