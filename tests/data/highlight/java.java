/**
 * Keeps the orders of a shop. Don't use "raw" types; see {@link Order}.
 *
 * <pre>// not a line comment</pre>
 */
package org.example.shop;

import java.util.*;
import static java.lang.Math.max;

@Deprecated(since = "2", forRemoval = true)
public final class OrderBook<T extends Order & Comparable<T>> implements Iterable<T> {
    private static final String PATH = "C:\\orders\\", QUOTE = "\"", URL = "http://x.org/*a*/";
    private static final char APOSTROPHE = '\'', DOUBLE = '"', SLASH = '/', OMEGA = '\u03a9';
    private static final long MASK = 0xFFFF_FFFFL, MODE = 0644, BIG = 1_000_000_000L;
    private static final double[] RATES = {1.5, .5, 1., 2e10, 3.0e-4f, 6.02E+23d, 1f, 0x1.8p1};

    private final Map<String, List<T>> orders = new HashMap<>(); // by customer
    private transient volatile int count = 0; /* all of them */
    private boolean closed;

    static final String QUERY = """
        select "name", 'it''s' /* text */
        from orders // also text
        where note = \"""quoted\""" and n > ""
        """;
    static final String ONE = """
        """, TWO = "";

    enum State { OPEN, CLOSED }

    class Inner { }

    public OrderBook() {
        this(null);
    }

    /* package */ OrderBook(Collection<? extends T> start) {
        super();
        if (start != null)
            start.forEach(this::add);
    }

    @Override
    public Iterator<T> iterator() {
        return orders.values().stream().flatMap(List::stream).iterator();
    }

    public synchronized void add(T order) throws IllegalStateException {
        if (closed) throw new IllegalStateException("closed: " + order + '\n');
        orders.computeIfAbsent(order.customer(), key -> new ArrayList<>()).add(order);
        count += 1; // "quoted" in a comment
        char c = (char) 65, d = '\\'; byte b = (byte) 0x7f; short s = 07;
        assert count > 0 : "count";
        Object type = Order.class;
        Object[] types = {String.class, int.class };
    }

    int compare(T a, T b) {
        int first = a.total() < b.total() ? -1 : 1; /* one */ int second = 2; /* two */
        /**/ int third = 3; /* // */ int fourth = 4; // /* nothing opens
        return max(first, second) >> 1 >>> 2;
    }

    void broken() {
        String open = "never closed;
        int next = 1;
        char c = 'x;
        String escaped = "ends in a backslash \
        int last = 2;
    }

    default boolean isOpen() { return !(closed instanceof Object) ? true : false; }

    @interface Marker { String value() default "none"; }

    native int peek(int at);
    var inferred = new int[] {1, 2, 3};
    strictfp float ratio() { try { return 1.0F / count; } catch (Exception e) { return 0; } finally { count--; } }
}
class Types { auto a; uchar b; uint c; }
/* at the end of the file
   "nothing closes it
