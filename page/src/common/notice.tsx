import type { ReactNode } from "react";

interface Props {
    kind: "error" | "warning" | "information";
    children: ReactNode;
}

/** A message of its own; errors are read out at once. */
export function Notice({ kind, children }: Props) {
    return (
        <div className={`notice ${kind}`} role={kind === "error" ? "alert" : "status"}>
            {children}
        </div>
    );
}
