/**
 * Clusters networks into hierarchies of overlapping clusters.
 *
 * <pre>{@code
 * try (Network network = Network.read(Path.of("karate.nse"));
 *         Clustering clustering = network.cluster()) {
 *     for (Membership m : clustering.memberships(9))
 *         System.out.println(m.cluster().id() + " " + m.share());
 * }
 * }</pre>
 *
 * <p>Networks and clusterings hold native memory; {@code close} frees it, and so does the collector
 * for those that were never closed. A closed object answers with an {@link
 * java.lang.IllegalStateException}. What the library refuses comes as a {@link
 * info.quenta.vorl.api.VorlException} with its text.
 */
package info.quenta.vorl.api;
