# Adds up the lines "N cases of WHAT" that tests and stages print; more may follow behind a colon. Programs of Windows
# end theirs with a carriage return.
{ sub(/\r$/, "") }
/^[0-9]+ cases of / {
  what = $0
  sub(/^[0-9]+ /, "", what)
  sub(/:.*/, "", what)
  sum[what] += $1
}
END { for (what in sum) printf "%.0f %s\n", sum[what], what | "sort -k 2" }
