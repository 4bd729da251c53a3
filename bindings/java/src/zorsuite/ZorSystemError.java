package zorsuite;

/** What the system said to the latest call on a socket that failed. */
public final class ZorSystemError {
  static final int NUMBERS = 2;

  /** The system's error number ({@code errno}), 0 while nothing has failed. */
  public final int number;

  /** When, by {@link ZorSuite#clockMs}. */
  public final long atMs;

  ZorSystemError(Numbers numbers) {
    number = numbers.takeInt();
    atMs = numbers.take();
  }
}
