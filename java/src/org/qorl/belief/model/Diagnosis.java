package org.qorl.belief.model;

import java.util.List;

/**
 * What a node is in a troubleshooting application.
 *
 * @param type its role
 * @param mandatory whether it must be observed before anything is concluded
 * @param ranked whether its faults are ranked by probability
 * @param defaultOutcome index of the outcome that is assumed without observation, or -1
 * @param faults indexes of the outcomes that are faults, ascending
 */
public record Diagnosis(
        Type type, boolean mandatory, boolean ranked, int defaultOutcome, List<Integer> faults) {

    /** Roles, in the order of the engine's codes from 0. */
    public enum Type {
        /** A possible cause. */
        TARGET,
        /** Something that can be observed or tested. */
        OBSERVATION,
        /** Neither. */
        AUXILIARY
    }

    // Makes a private copy of the list.
    public Diagnosis {
        faults = List.copyOf(faults);
    }

    /**
     * The same with another role.
     *
     * @param changed the new role
     * @return a new value
     */
    public Diagnosis withType(Type changed) {
        return new Diagnosis(changed, mandatory, ranked, defaultOutcome, faults);
    }
}
