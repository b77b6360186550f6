import type { StreamStatus } from "@/api/types";

/** The state of a stream; changes are read out when nothing else is. */
export function StateBadge({ stream }: { stream: StreamStatus }) {
    return (
        <span className={`badge ${stream.state}`} role="status" aria-label={`${stream.id}: ${stream.state}`}>
            {stream.state}
        </span>
    );
}
