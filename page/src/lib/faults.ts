import type { ErrorSchema } from "@rjsf/utils";

/** What the server finds wrong with one value of a request. */
export interface Fault {
    path: string;
    reason: string;
}

/** Faults where a form shows them, and those that belong to none of its fields. */
export interface PlacedFaults {
    errors: ErrorSchema;
    rest: Fault[];
}

/** Sorts faults into the form of the part at a dotted path. hasField: whether the form has a field at a path of its own. */
export function placeFaults(faults: Fault[], root: string, hasField: (path: string) => boolean): PlacedFaults {
    const placed: PlacedFaults = { errors: {}, rest: [] };
    for (const fault of faults) {
        const path = within(fault.path, root);
        if (path === undefined || !hasField(path.join("."))) placed.rest.push(fault);
        else addError(placed.errors, path, fault.reason);
    }
    return placed;
}

/** The steps below root: "streams.gate.zones[1]" below "streams.gate" is zones, 1. */
function within(path: string, root: string): string[] | undefined {
    if (root !== "" && !path.startsWith(`${root}.`)) return undefined;
    const rest = root === "" ? path : path.slice(root.length + 1);
    return rest === "" ? undefined : rest.replace(/\[(\d+)\]/g, ".$1").split(".");
}

function addError(errors: ErrorSchema, path: string[], reason: string): void {
    let node = errors as Record<string, ErrorSchema>;
    for (const step of path) node = (node[step] ??= {}) as Record<string, ErrorSchema>;
    const leaf = node as { __errors?: string[] };
    leaf.__errors = [...(leaf.__errors ?? []), reason];
}
