package zorsuite;

/** The datagrams that reached a listener or a search, and what became of them. */
public final class ZorLineReport {
  static final int NUMBERS = 8;

  /** Received, of any content. */
  public final long datagrams;

  /** Announcements, or answers to a search. */
  public final long lines;

  /** Modules posted to the listener. */
  public final long reported;

  /** Lines of a module that was reported before. */
  public final long repeats;

  /** New modules for which there was no listener. */
  public final long withoutListener;

  /** Reports that found too many undelivered, were rejected by the executor, or found no memory. */
  public final long dropped;

  /** Refused: another tag, or no module line at all. */
  public final long otherContent;

  /** Refused: no content. */
  public final long empty;

  ZorLineReport(Numbers numbers) {
    datagrams = numbers.take();
    lines = numbers.take();
    reported = numbers.take();
    repeats = numbers.take();
    withoutListener = numbers.take();
    dropped = numbers.take();
    otherContent = numbers.take();
    empty = numbers.take();
  }
}
