package zorsuite;

import java.lang.ref.PhantomReference;
import java.lang.ref.Reference;
import java.lang.ref.ReferenceQueue;
import java.util.Set;
import java.util.concurrent.ConcurrentHashMap;
import java.util.concurrent.Executor;
import java.util.concurrent.Executors;
import java.util.concurrent.atomic.AtomicLong;

/** Hands the library's closures to the application's executor, and frees those that it loses. */
final class MainQueue {
  /** A native closure: who takes its address runs or frees it, so that each ends once. */
  private static final class Handle extends PhantomReference<Closure> {
    private final AtomicLong address = new AtomicLong();

    Handle(Closure closure) { super(closure, LOST); }

    /** 0 for all but the first. */
    long take() { return address.getAndSet(0); }
  }

  private static final class Closure implements Runnable {
    private final Handle handle = new Handle(this);

    @Override
    public void run() {
      HANDLES.remove(handle);
      final long address = handle.take();
      if (address != 0) Native.closureRun(address);
    }
  }

  private static final class Default {
    static final Executor EXECUTOR = Executors.newSingleThreadExecutor(work -> {
      final Thread thread = new Thread(work, "zor-callbacks");
      thread.setDaemon(true);
      return thread;
    });
  }

  /** Closures that the executor has dropped without running them. */
  private static final ReferenceQueue<Closure> LOST = new ReferenceQueue<>();

  /** Keeps the handles of closures that the executor has. */
  private static final Set<Handle> HANDLES = ConcurrentHashMap.newKeySet();

  private static volatile Executor executor;

  private MainQueue() {}

  static void setExecutor(Executor next) { executor = next; }

  /** Returns false when the executor rejects the closure, which then stays the caller's. */
  static boolean post(long address) {
    freeDropped();
    final Closure closure = new Closure();
    HANDLES.add(closure.handle);
    closure.handle.address.set(address); // From here on nothing throws but the executor.
    try {
      final Executor chosen = executor;
      (chosen != null ? chosen : Default.EXECUTOR).execute(closure);
      return true;
    } catch (Throwable rejected) {
      HANDLES.remove(closure.handle);
      return closure.handle.take() == 0;
    }
  }

  static void freeDropped() {
    for (Reference<? extends Closure> lost = LOST.poll(); lost != null; lost = LOST.poll()) {
      final Handle handle = (Handle) lost;
      HANDLES.remove(handle);
      final long address = handle.take();
      if (address != 0) Native.closureFree(address);
    }
  }
}
