package info.quenta.vorl.api;

import java.io.IOException;
import java.io.UncheckedIOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;

/**
 * Clusters of a file in the format CNL, a cluster a line: {@code [id>] node[:share] ...}. Neither
 * ids nor what the header tells is looked at, since the library stops the process where a header is
 * wrong.
 */
final class ClustersFile {
    private final Path file;
    private int[] members = new int[64];
    private float[] shares = new float[64]; // 0 where none is stated
    private int count;
    private int[] ends = new int[16]; // of the clusters' members
    private int clusters;

    private ClustersFile(Path file) { this.file = file; }

    /**
     * Reads a file.
     *
     * @throws UncheckedIOException if it can't be read
     * @throws VorlException if it doesn't hold clusters
     */
    static ClustersFile read(Path file) {
        ClustersFile result = new ClustersFile(file);
        try (var reader = Files.newBufferedReader(file, StandardCharsets.ISO_8859_1)) {
            int number = 0;
            for (String line = reader.readLine(); line != null; line = reader.readLine())
                result.addLine(line.strip(), ++number);
        } catch (IOException err) {
            throw new UncheckedIOException(err);
        }
        if (result.clusters == 0)
            throw new VorlException(file + ": there are no clusters");
        result.completeShares();
        return result;
    }

    private void addLine(String line, int number) {
        if (line.isEmpty() || line.startsWith("#"))
            return;
        int digits = 0;
        while (digits < line.length() && Character.isDigit(line.charAt(digits))) ++digits;
        boolean numbered = digits > 0 && digits < line.length() && line.charAt(digits) == '>';
        int begin = count;
        for (String token : line.substring(numbered ? digits + 1 : 0).strip().split("[ \t]+"))
            if (!token.isEmpty())
                addMember(token, number);
        if (count == begin)
            return;
        int[] sorted = Arrays.copyOfRange(members, begin, count);
        Arrays.sort(sorted);
        for (int i = 1; i < sorted.length; ++i)
            if (sorted[i] == sorted[i - 1])
                throw fault(number,
                    "node " + Integer.toUnsignedString(sorted[i])
                        + " stands twice in the line, each member once is expected");
        if (clusters == ends.length)
            ends = Arrays.copyOf(ends, 2 * clusters);
        ends[clusters++] = count;
    }

    private void addMember(String token, int number) {
        int colon = token.indexOf(':');
        String id = colon < 0 ? token : token.substring(0, colon);
        if (count == members.length) {
            int size = Math.addExact(count, count >> 1);
            members = Arrays.copyOf(members, size);
            shares = Arrays.copyOf(shares, size);
        }
        try {
            members[count] = Integer.parseUnsignedInt(id);
        } catch (NumberFormatException err) {
            throw fault(number, "the node is \"" + id + "\", an id is expected");
        }
        if (members[count] == -1 || id.startsWith("+"))
            throw fault(number, "the node is \"" + id + "\", an id is expected");
        float share = 0;
        try {
            if (colon >= 0)
                share = Float.parseFloat(token.substring(colon + 1));
        } catch (NumberFormatException err) {
            share = -1;
        }
        if (colon >= 0 && !(share >= Float.MIN_NORMAL && share <= 1))
            throw fault(number,
                "the share of node " + id + " is \"" + token.substring(colon + 1)
                    + "\", a number above 0 and up to 1 is expected");
        shares[count++] = share;
    }

    private VorlException fault(int line, String what) {
        return new VorlException(file + ":" + line + ": " + what);
    }

    /** Makes the shares of each node all stated, adding up to 1, or none. */
    private void completeShares() {
        long[] places = new long[count];
        for (int i = 0; i < count; ++i) places[i] = (long) members[i] << 32 | i;
        Arrays.sort(places);
        for (int begin = 0, end = 0; begin < count; begin = end) {
            while (end < count && places[end] >> 32 == places[begin] >> 32) ++end;
            completeShares(Arrays.stream(places, begin, end).mapToInt(p -> (int) p).toArray());
        }
    }

    private void completeShares(int[] own) {
        boolean even = true;
        for (int place : own) even &= shares[place] == 0 || shares[place] == 1;
        double sum = 0;
        float rounded = 0;
        boolean whole = false;
        for (int place : own) {
            if (even || shares[place] == 0)
                shares[place] = 1f / own.length;
            sum += shares[place];
            rounded += shares[place];
            whole |= shares[place] == 1;
        }
        // The library takes a share of 1 for one that isn't stated.
        if (own.length > 1 && (whole || rounded != 1))
            scale(own, sum);
        else if (even || own.length == 1)
            for (int place : own) shares[place] = 0;
    }

    /** Scales shares so that they add up to 1 at 32 bits: each takes over the others' rounding. */
    private void scale(int[] own, double sum) {
        double target = 0;
        float reached = 0;
        for (int place : own) {
            target += shares[place] / sum;
            shares[place] =
                Math.min(Math.max((float) (target - reached), Float.MIN_NORMAL), Math.nextDown(1f));
            reached += shares[place];
        }
    }

    /** Writes the clusters for the library. */
    void write(Path target) {
        try (var out = Files.newBufferedWriter(target, StandardCharsets.ISO_8859_1)) {
            for (int cluster = 0, i = 0; cluster < clusters; ++cluster) {
                for (; i < ends[cluster]; ++i) {
                    out.write(Integer.toUnsignedString(members[i]));
                    if (shares[i] != 0)
                        out.write(":" + shares[i]);
                    out.write(' ');
                }
                out.write('\n');
            }
        } catch (IOException err) {
            throw new UncheckedIOException(err);
        }
    }
}
